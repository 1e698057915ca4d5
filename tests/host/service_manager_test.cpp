// What the watchdog of a service manager hears: of a busy server pings, of one that hangs none.
#include "host/cli/service_manager.h"

#include <sys/un.h>

#include <cstddef>
#include <cstdlib>
#include <thread>

#include "tests/host/support/served.h"

namespace host::test {
namespace {

// A manager that hears us.
class Manager {
 protected:
  Manager() {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
    const std::string name = "vela-health-test-" + std::to_string(getpid());
    sockaddr_un address = {AF_UNIX, {}};
    name.copy(address.sun_path + 1, name.size());
    const auto length = offsetof(sockaddr_un, sun_path) + 1 + name.size();
    bind(hears_, reinterpret_cast<sockaddr*>(&address), static_cast<socklen_t>(length));
    setenv("NOTIFY_SOCKET", ("@" + name).c_str(), 1);
    setenv("WATCHDOG_USEC", "150000", 1);
    told_.emplace();
  }
  ~Manager() {
    unsetenv("NOTIFY_SOCKET");
    unsetenv("WATCHDOG_USEC");
    close(hears_);
  }

  // The words that it hears within this time.
  std::string Hear(std::chrono::seconds time) const {
    const timeval bound = {time.count(), 0};
    setsockopt(hears_, SOL_SOCKET, SO_RCVTIMEO, &bound, sizeof bound);
    return Read(hears_);
  }

  const int hears_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sigset_t signals_;
  std::optional<ServiceManager> told_;
};

class WatchedServer : protected Manager, public Server {
 protected:
  explicit WatchedServer(std::chrono::seconds hangsAfter = std::chrono::hours(1))
      : Server({told_->ServersEnd(), hangsAfter}),
        pings_([this] { EXPECT_EQ(told_->AwaitSignal(signals_), SIGUSR1); }) {}
  ~WatchedServer() override { pthread_kill(pings_.native_handle(), SIGUSR1); }

  // More than what was on its way before.
  void ExpectPings() const {
    for (int i = 0; i < 4; ++i) EXPECT_EQ(Hear(std::chrono::seconds(30)), "WATCHDOG=1");
  }
  // But for what was on its way before.
  void ExpectNoPings() const {
    while (recv(hears_, nullptr, 0, MSG_DONTWAIT) >= 0) continue;
    EXPECT_LE(Hear(std::chrono::seconds(1)) + Hear(std::chrono::seconds(1)), "WATCHDOG=1");
  }

  std::jthread pings_;
};

TEST_F(WatchedServer, PingsHoweverBusyItIsAndNotWhenItsThreadHangs) {
  OccupyWorkers();
  for (int i = 0; i < 64; ++i) Send("GET /" + std::to_string(i));
  EXPECT_TRUE(AnswersAtOnce());
  ExpectPings();
  Send("GET /stuck");
  site_.AwaitBegun(kWorkers + 1);
  ExpectNoPings();
  site_.Release();
  ExpectPings();
}

class ImpatientServer : public WatchedServer {
 protected:
  ImpatientServer() : WatchedServer(std::chrono::seconds(0)) {}
};

TEST_F(ImpatientServer, PingsNotWhileAQueryHangs) {
  ExpectPings();
  Send("GET /slow");
  site_.AwaitBegun(1);
  ExpectNoPings();
  const std::string answer = ReadAll(Send("GET /healthz"));
  EXPECT_TRUE(answer.starts_with("HTTP/1.1 503")) << answer;
  site_.Release();
  ExpectPings();
}

}  // namespace
}  // namespace host::test
