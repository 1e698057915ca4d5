#include "platform/linux/supervise/descendants.h"

#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <set>
#include <string>

#include "platform/linux/base/open.h"
#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

struct Process {
  pid_t parent = 0, group = 0;
};

// The name, in parentheses, may hold anything.
Process ReadProcess(const char* number) {
  Process process;
  const std::string stat = Attribute(Concatenate("/proc/", number, "/stat"));
  const std::size_t end = stat.rfind(')');
  if (end != std::string::npos)
    std::sscanf(stat.c_str() + end, ") %*c %d %d", &process.parent, &process.group);
  return process;
}

// Adds who is below one that is `known`, and stops it with its group, in which then none can
// start another. /proc mostly lists a parent before its child, so one look finds nearly all, and
// those that it finds no longer keep it from its turn. False when there was nobody new.
bool StopNewOnes(std::set<pid_t>& known, std::set<pid_t>& groups) {
  bool found = false;
  const auto folder = OpenFolder("/proc");
  while (const dirent* entry = folder ? readdir(folder.get()) : nullptr) {
    const auto pid = static_cast<pid_t>(ToNumber(entry->d_name).value_or(0));
    if (pid <= 0 || known.contains(pid)) continue;
    const Process process = ReadProcess(entry->d_name);
    if (!known.contains(process.parent)) continue;
    known.insert(pid);
    kill(groups.insert(process.group).second ? -process.group : pid, SIGSTOP);
    found = true;
  }
  return found;
}

}  // namespace

void KillDescendants(pid_t leader) {
  setpriority(PRIO_PROCESS, 0, -20);  // only root may, and then goes before a crowd
  if (leader > 0) kill(-leader, SIGSTOP);
  std::set<pid_t> known = {getpid()}, groups = {getpgrp()};
  while (StopNewOnes(known, groups)) continue;
  known.erase(getpid());
  for (const pid_t each : known) kill(each, SIGKILL);
}

}  // namespace linux_platform
