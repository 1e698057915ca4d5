#include "platform/linux/base/process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>
#include <thread>

#include "platform/linux/base/deadline.h"
#include "platform/linux/base/descendants.h"

namespace linux_platform {
namespace {

using std::chrono::milliseconds, std::chrono::microseconds, std::chrono::steady_clock;

constexpr auto kGracePeriod = milliseconds(100);

// Children that a SIGKILL did not end in time. They wait in the kernel, on a dead disk
// say, and another run of the same command would only join them.
class StuckChildren {
 public:
  // Reaps those that ended since. Whether one of `command` is left.
  bool Any(const std::vector<std::string>& command) {
    const std::lock_guard lock(mutex_);
    std::erase_if(stuck_,
                  [](const auto& each) { return waitpid(each.pid, nullptr, WNOHANG) != 0; });
    return std::ranges::find(stuck_, command, &Stuck::command) != stuck_.end();
  }
  void Add(const std::vector<std::string>& command, pid_t pid) {
    const std::lock_guard lock(mutex_);
    stuck_.push_back({command, pid});
  }

 private:
  struct Stuck {
    std::vector<std::string> command;
    pid_t pid;
  };
  std::mutex mutex_;
  std::vector<Stuck> stuck_;
};

StuckChildren& AllStuck() {
  static StuckChildren stuck;
  return stuck;
}

class SpawnActions {
 public:
  // `output` must lie above the standard descriptors.
  explicit SpawnActions(int output) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
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
  SpawnAttributes() {
    sigset_t all, none;
    sigfillset(&all);
    sigemptyset(&none);
    posix_spawnattr_init(&attributes_);
    posix_spawnattr_setflags(
        &attributes_, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
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

// Both ends close on exec, the reading end does not block, and the writing end lies
// above the standard descriptors even when this process has closed its own.
bool MakePipe(Descriptor& reading, Descriptor& writing) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return false;
  reading = Descriptor(ends[0]);
  writing = Descriptor(ends[1]);
  if (ends[1] <= STDERR_FILENO) writing = Descriptor(fcntl(ends[1], F_DUPFD_CLOEXEC, 3));
  return writing && fcntl(ends[0], F_SETFL, O_NONBLOCK) == 0;
}

// 0, or an error number. posix_spawn shares this process's memory until the program
// runs, so nothing of it is copied.
int Spawn(const std::vector<std::string>& arguments, int output, pid_t& pid) {
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  char path[] = "PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";
  char locale[] = "LC_ALL=C";
  char* const environment[] = {path, locale, nullptr};
  return posix_spawn(&pid, argv[0], SpawnActions(output).Get(), SpawnAttributes().Get(),
                     argv.data(), environment);
}

// Waits until the child is dead, but leaves it to be reaped: while it is there, no other
// process can take its number, which is also its group's.
bool AwaitDeath(pid_t pid, milliseconds bound) {
  const auto end = steady_clock::now() + bound;
  for (microseconds pause(50);; pause = std::min<microseconds>(pause * 2, milliseconds(5))) {
    siginfo_t info = {};
    if (waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) != 0) return true;
    if (info.si_pid == pid) return true;
    if (steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(pause);
  }
}

}  // namespace

Child::Child(const std::vector<std::string>& arguments, Bounds bounds, std::string& reason)
    : command_(arguments), deadline_(steady_clock::now() + bounds.time), bounds_(bounds) {
  if (AllStuck().Any(command_)) {
    reason = command_.at(0) + " was not started: its last run is still stuck in the kernel";
    return;
  }
  Descriptor writing;
  int error = MakePipe(output_, writing) ? 0 : errno;
  if (error == 0) error = Spawn(arguments, writing.Get(), pid_);
  if (error == 0) return;
  pid_ = -1;
  reason = command_.at(0) + " could not be started: " + std::strerror(error);
}

Child::~Child() { Finish(); }

ssize_t Child::CutOff(Cut cut) {
  cut_ = cut;
  ended_ = true;
  KillWithDescendants(pid_);
  return 0;
}

ssize_t Child::Read(char* buffer, std::size_t size) {
  if (ended_ || size == 0) return 0;
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(deadline_ - steady_clock::now()).count();
    if (left <= 0) return CutOff(Cut::Late);
    const ssize_t got = read(output_.Get(), buffer, size);
    if (got >= 0) {
      ended_ = got == 0;
      delivered_ += static_cast<std::size_t>(got);
      return delivered_ > bounds_.output ? CutOff(Cut::Long) : got;
    }
    if (errno == EINTR) continue;
    if (errno != EAGAIN) return -1;
    pollfd ready = {output_.Get(), POLLIN, 0};
    poll(&ready, 1, static_cast<int>(left));
  }
}

int Child::Finish() {
  if (!Started()) return -1;
  const pid_t pid = std::exchange(pid_, -1);
  output_ = Descriptor();
  // A program that closed its output is about to exit and may keep its exit status.
  if (ended_ && cut_ == Cut::None) AwaitDeath(pid, TimesFactor(kGracePeriod));
  kill(-pid, SIGKILL);
  if (!AwaitDeath(pid, TimesFactor(kGracePeriod))) {
    AllStuck().Add(command_, pid);
    return -1;
  }
  int status = -1;
  return waitpid(pid, &status, WNOHANG) == pid ? status : -1;
}

}  // namespace linux_platform
