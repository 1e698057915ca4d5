#include "platform/linux/base/spawn.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <thread>

namespace linux_platform {
namespace {

using std::chrono::milliseconds, std::chrono::microseconds, std::chrono::steady_clock;

class SpawnActions {
 public:
  explicit SpawnActions(const SpawnSettings& settings) {
    posix_spawn_file_actions_init(&actions_);
    if (settings.input < 0)
      posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    else
      posix_spawn_file_actions_adddup2(&actions_, settings.input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions_, settings.output, STDOUT_FILENO);
    if (settings.joinsErrors)
      posix_spawn_file_actions_adddup2(&actions_, settings.output, STDERR_FILENO);
    else
      posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
  }
  ~SpawnActions() { posix_spawn_file_actions_destroy(&actions_); }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;
  const posix_spawn_file_actions_t* Get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

class SpawnAttributes {
 public:
  explicit SpawnAttributes(bool hasOwnSession) {
    sigset_t all, none;
    sigfillset(&all);
    sigemptyset(&none);
    const int group = hasOwnSession ? POSIX_SPAWN_SETSID : POSIX_SPAWN_SETPGROUP;
    posix_spawnattr_init(&attributes_);
    posix_spawnattr_setflags(
        &attributes_, static_cast<short>(group | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF));
    posix_spawnattr_setpgroup(&attributes_, 0);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setsigdefault(&attributes_, &all);
  }
  ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;
  const posix_spawnattr_t* Get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_;
};

}  // namespace

int Spawn(char* const* argv, char* const* environment, const SpawnSettings& settings, pid_t& pid) {
  return posix_spawn(&pid, argv[0], SpawnActions(settings).Get(),
                     SpawnAttributes(settings.hasOwnSession).Get(), argv, environment);
}

Descriptor AboveStandard(Descriptor descriptor) {
  if (!descriptor || descriptor.Get() > STDERR_FILENO) return descriptor;
  return Descriptor(fcntl(descriptor.Get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

bool AwaitDeath(pid_t pid, milliseconds bound) {
  const auto end = steady_clock::now() + bound;
  for (microseconds pause(50);; pause = std::min<microseconds>(pause * 2, milliseconds(5))) {
    siginfo_t info = {};
    constexpr int kEndOrStop = WEXITED | WSTOPPED | WNOHANG | WNOWAIT;
    if (waitid(P_PID, static_cast<id_t>(pid), &info, kEndOrStop) != 0) return true;
    const bool isStopped = info.si_pid == pid && info.si_code == CLD_STOPPED;
    if (info.si_pid == pid && !isStopped) return true;
    if (steady_clock::now() >= end) return false;
    if (isStopped) kill(pid, SIGCONT);
    std::this_thread::sleep_for(pause);
  }
}

}  // namespace linux_platform
