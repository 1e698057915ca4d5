#include "host/cli/stop_signals.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <ctime>

namespace host {
namespace {

constexpr int kStopSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
constexpr int kRounds = 100;
constexpr timespec kPause = {0, 1'000'000};

bool IsIgnored(int number) {
  struct sigaction action = {};
  sigaction(number, nullptr, &action);
  return action.sa_handler == SIG_IGN;
}

sigset_t StopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : kStopSignals) {
    if (!IsIgnored(number)) sigaddset(&signals, number);
  }
  return signals;
}

// A child that was not reaped yet keeps its number, and its group's, to itself.
void Kill(pid_t child) {
  kill(-child, SIGKILL);
  kill(child, SIGKILL);
  waitpid(child, nullptr, WNOHANG);
}

// The children of one thread, "7 11 ", as far as they fit: the next round finds the others.
bool KillListed(int tasks, const char* task) {
  const int folder = openat(tasks, task, O_PATH | O_CLOEXEC);
  const int file = openat(folder, "children", O_RDONLY | O_CLOEXEC);
  char text[4096];
  const ssize_t size = read(file, text, sizeof text);
  close(file);
  close(folder);
  pid_t child = 0;
  for (ssize_t i = 0; i < size; ++i) {
    if (text[i] != ' ') {
      child = child * 10 + (text[i] - '0');
    } else {
      Kill(child);
      child = 0;
    }
  }
  return size > 0;
}

// Whether there was one.
bool KillAllListed() {
  const int tasks = open("/proc/self/task", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  alignas(dirent64) char entries[4096];
  bool any = false;
  for (ssize_t size = 0; (size = getdents64(tasks, entries, sizeof entries)) > 0;) {
    for (ssize_t at = 0; at < size;) {
      const auto* task = reinterpret_cast<const dirent64*>(entries + at);
      if (task->d_name[0] != '.') any |= KillListed(tasks, task->d_name);
      at += task->d_reclen;
    }
  }
  close(tasks);
  return any;
}

void End(int number) {
  KillChildren();
  signal(number, SIG_DFL);
  sigset_t itself;
  sigemptyset(&itself);
  sigaddset(&itself, number);
  pthread_sigmask(SIG_UNBLOCK, &itself, nullptr);
  raise(number);
  _exit(128 + number);  // a container's first process is not ended by its own signal
}

}  // namespace

void EndAtStopSignals() {
  struct sigaction action = {};
  action.sa_handler = End;
  sigfillset(&action.sa_mask);
  for (const int number : kStopSignals) {
    if (!IsIgnored(number)) sigaction(number, &action, nullptr);
  }
}

void HoldStopSignals() {
  const sigset_t signals = StopSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void AwaitStopSignal() {
  const sigset_t signals = StopSignals();
  int received = 0;
  sigwait(&signals, &received);
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

// Whatever loses its parent here becomes our child, and is found in the next round.
void KillChildren() {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  for (int round = 0; round < kRounds && KillAllListed(); ++round) nanosleep(&kPause, nullptr);
}

}  // namespace host
