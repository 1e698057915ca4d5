#include "platform/linux/supervise/descendants.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <set>
#include <string>

#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

// By parent. The name, in parentheses, may hold anything.
std::vector<Process> ListProcesses() {
  std::vector<Process> processes;
  for (const std::string& name : NamesIn("/proc")) {
    const auto pid = ToNumber(name);
    if (!pid) continue;
    const std::string stat = Attribute(Within(Within("/proc", name), "stat"));
    const std::size_t end = stat.rfind(')');
    Process process = {static_cast<pid_t>(*pid), 0, 0};
    if (end != std::string::npos &&
        std::sscanf(stat.c_str() + end, ") %*c %d %d", &process.parent, &process.group) == 2)
      processes.push_back(process);
  }
  std::ranges::stable_sort(processes, {}, &Process::parent);
  return processes;
}

// To a whole group in one step, in which none of it can start another. Everything below this
// process is in groups of its own making, but for who joined the group of this process.
void Signal(const Process& process, int number) {
  kill(process.group == getpgrp() ? process.pid : -process.group, number);
}

}  // namespace

std::vector<Process> ListDescendants() {
  const std::vector<Process> all = ListProcesses();
  std::vector<Process> found = {{getpid(), 0, 0}};
  for (std::size_t i = 0; i < found.size(); ++i) {
    const auto children = std::ranges::equal_range(all, found[i].pid, {}, &Process::parent);
    found.insert(found.end(), children.begin(), children.end());
  }
  found.erase(found.begin());
  return found;
}

void KillDescendants() {
  std::set<pid_t> stopped;
  std::vector<Process> found;
  for (std::size_t before = 0; found = ListDescendants(), true;) {
    for (const Process& process : found)
      if (stopped.insert(process.pid).second) Signal(process, SIGSTOP);
    if (stopped.size() == before) break;
    before = stopped.size();
  }
  for (const Process& process : found) Signal(process, SIGKILL);
}

}  // namespace linux_platform
