// vela-supervise: runs one program for the health platform, and ends all that it started.
// The platform itself cannot: it lives in somebody's server, where orphans are not its own to
// take up.
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <string_view>

#include "platform/linux/base/spawn.h"
#include "platform/linux/base/supervision.h"
#include "platform/linux/supervise/descendants.h"

using namespace linux_platform;

namespace {

using std::chrono::milliseconds, std::chrono::steady_clock;

class Supervisor {
 public:
  Supervisor(pid_t leader, milliseconds grace, int line, int signals)
      : leader_(leader), grace_(grace), line_(line), signals_(signals) {}

  // Until nothing is left of what was started.
  void Run() {
    while (ReapOrWait()) continue;
    for (int pause = 1; !Reap(); pause = std::min(pause * 2, 1000)) {
      KillDescendants(leader_);
      poll(nullptr, 0, pause);
    }
  }

 private:
  // True when no child is left.
  bool Reap() {
    int status = 0;
    pid_t dead = 0;
    while ((dead = waitpid(-1, &status, WNOHANG)) > 0)
      if (dead == leader_) {
        send(line_, &status, sizeof status, MSG_NOSIGNAL);
        leader_ = -1;
      }
    return dead < 0;
  }

  // False when it is time to end what is left, if anything is.
  bool ReapOrWait() {
    if (Reap() || (isClosed_ && (leader_ < 0 || steady_clock::now() >= end_))) return false;
    pollfd ready[] = {{signals_, POLLIN, 0}, {isClosed_ ? -1 : line_, POLLIN, 0}};
    const auto left = std::chrono::ceil<milliseconds>(end_ - steady_clock::now()).count();
    poll(ready, 2, isClosed_ ? static_cast<int>(std::max<long>(left, 0)) : -1);
    signalfd_siginfo info = {};
    while (read(signals_, &info, sizeof info) > 0)
      if (info.ssi_signo != SIGCHLD) return false;
    if (isClosed_ || ready[1].revents == 0) return true;
    char order = 0;
    if (recv(line_, &order, 1, MSG_DONTWAIT) > 0) return false;
    isClosed_ = true;
    end_ = steady_clock::now() + grace_;
    return true;
  }

  pid_t leader_;
  milliseconds grace_;
  int line_, signals_;
  bool isClosed_ = false;  // the platform has let go, or is gone
  steady_clock::time_point end_;
};

// The program's process; -1 when it could not be started. Its output stays open in it alone.
pid_t Start(char** arguments, int line) {
  const bool joinsErrors = std::string_view(*arguments) == kJoinErrors;
  const Descriptor output = AboveStandard(Descriptor(STDOUT_FILENO));
  pid_t leader = -1;
  const int error = Spawn(arguments + (joinsErrors ? 1 : 0), environ,
                          {.output = output.Get(), .joinsErrors = joinsErrors}, leader);
  send(line, &error, sizeof error, MSG_NOSIGNAL);
  return error == 0 ? leader : -1;
}

}  // namespace

// usage: vela-supervise GRACE [errors] PROGRAM [ARGUMENT]...   GRACE in milliseconds; only the
// platform starts it (supervision.h)
int main(int count, char** arguments) {
  if (count < 3) return 64;
  sigset_t all;
  sigfillset(&all);
  sigprocmask(SIG_BLOCK, &all, nullptr);
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  const Descriptor line = AboveStandard(Descriptor(STDIN_FILENO));
  const Descriptor signals(signalfd(-1, &all, SFD_CLOEXEC | SFD_NONBLOCK));
  const pid_t leader = Start(arguments + 2, line.Get());
  if (leader < 0) return 1;
  Supervisor(leader, milliseconds(std::atoi(arguments[1])), line.Get(), signals.Get()).Run();
  return 0;
}
