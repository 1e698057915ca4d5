#include "platform/linux/base/process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstring>
#include <mutex>

#include "platform/linux/base/deadline.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/spawn.h"
#include "platform/linux/base/supervision.h"

namespace linux_platform {
namespace {

using std::chrono::milliseconds, std::chrono::steady_clock;

constexpr auto kGracePeriod = milliseconds(100);

// Supervisors of what a SIGKILL did not end in time: it waits in the kernel, on a dead disk
// say. Another run of the same command would only join it, unless the command itself has ended
// and only something that it started is left.
class StuckChildren {
 public:
  // Reaps those that ended since. Whether one of `command` is left.
  bool Any(const std::vector<std::string>& command) {
    const std::lock_guard lock(mutex_);
    std::erase_if(stuck_, [](const auto& each) {
      kill(each.pid, SIGCONT);  // not reaped yet, so the number is still its own
      return waitpid(each.pid, nullptr, WNOHANG) != 0;
    });
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

// Both ends close on exec, the reading end does not block, and the writing end lies
// above the standard descriptors even when this process has closed its own.
bool MakePipe(Descriptor& reading, Descriptor& writing) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return false;
  reading = Descriptor(ends[0]);
  writing = AboveStandard(Descriptor(ends[1]));
  return writing && fcntl(ends[0], F_SETFL, O_NONBLOCK) == 0;
}

}  // namespace

Child::Child(const std::vector<std::string>& arguments, Bounds bounds, std::string& reason)
    : command_(arguments), deadline_(steady_clock::now() + bounds.time), bounds_(bounds) {
  if (!MayStart(command_.at(0), reason)) return;
  if (AllStuck().Any(command_)) {
    reason = command_.at(0) + " was not started: its last run is still stuck in the kernel";
    return;
  }
  Descriptor writing;
  int error = MakePipe(output_, writing) ? 0 : errno;
  std::string what = command_.at(0);
  if (error == 0)
    error = StartSupervised(command_, TimesFactor(kGracePeriod),
                            {writing.Get(), bounds.joinsErrors}, line_, pid_, what);
  if (error != 0) pid_ = -1;
  if (error == 0) error = AwaitStart();
  if (error == 0) return;
  Finish();
  reason = what + " could not be started: " + std::strerror(error);
}

Child::~Child() { Finish(); }

// 0, or why the program did not start. One that takes longer than its time to start is late.
int Child::AwaitStart() {
  int error = 0;
  pollfd ready = {line_.Get(), POLLIN, 0};
  while (poll(&ready, 1, static_cast<int>(TimeLeft())) < 0 && errno == EINTR) continue;
  if (ready.revents == 0) return 0;
  return recv(line_.Get(), &error, sizeof error, 0) == sizeof error ? error : EIO;
}

// Rounded up, so that nobody waits in vain for the last part of a millisecond; 0 when it is over.
long Child::TimeLeft() const {
  return std::max<long>(std::chrono::ceil<milliseconds>(deadline_ - steady_clock::now()).count(),
                        0);
}

// A program may have stopped its supervisor, and may do so again: AwaitDeath goes on with that.
void Child::EndNow() {
  send(line_.Get(), "", 1, MSG_NOSIGNAL);
  kill(pid_, SIGCONT);
}

ssize_t Child::CutOff(Cut cut) {
  cut_ = cut;
  ended_ = true;
  EndNow();
  return 0;
}

ssize_t Child::Read(char* buffer, std::size_t size) {
  if (ended_ || size == 0) return 0;
  for (;;) {
    const long left = TimeLeft();
    if (left == 0) return CutOff(Cut::Late);
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
  output_ = Descriptor();
  // A program that closed its output is about to exit and may keep its exit status. The line
  // ends even where this process was forked and a copy of it is left.
  if (!ended_) EndNow();
  shutdown(line_.Get(), SHUT_WR);
  const pid_t pid = std::exchange(pid_, -1);
  const bool isDead = AwaitDeath(pid, TimesFactor(2 * kGracePeriod));
  int status = -1;
  const bool isKnown =
      recv(line_.Get(), &status, sizeof status, MSG_DONTWAIT) == ssize_t{sizeof status};
  if (isDead)
    waitpid(pid, nullptr, WNOHANG);
  else
    AllStuck().Add(isKnown ? std::vector<std::string>() : command_, pid);
  return isKnown ? status : -1;
}

}  // namespace linux_platform
