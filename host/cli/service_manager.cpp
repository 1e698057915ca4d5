#include "host/cli/service_manager.h"

#include <dlfcn.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "host/loader/library.h"
#include "host/text/failure.h"

namespace host {
namespace {

constexpr std::string_view kQuestion = "HEAD /healthz HTTP/1.1\r\nHost: localhost\r\n\r\n";
constexpr std::string_view kWell = "HTTP/1.1 200 ";
// Each looks for the answer to the question of the one before: a single late answer is no hang.
constexpr int kTurnsAWatch = 3;

}  // namespace

// Opened rather than linked: a command that no manager started need not load it.
ServiceManager::ServiceManager() {
  if (std::getenv("NOTIFY_SOCKET") == nullptr) return;
  const Library library("libsystemd.so.0", RTLD_NOW, "the service manager's library",
                        "Install libsystemd0, or start without NOTIFY_SOCKET.");
  notify_ = library.FindFunction<decltype(notify_)>("sd_notify");
  std::uint64_t watchdog = 0;
  library.FindFunction<int (*)(int, std::uint64_t*)>("sd_watchdog_enabled")(0, &watchdog);
  if (watchdog == 0) return;
  watchdog_ = std::chrono::microseconds(watchdog);
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends_) == 0) return;
  throw Failure(kUnavailable, "Cannot watch the server: this process may open too few files.");
}

ServiceManager::~ServiceManager() {
  if (ends_[0] >= 0) close(ends_[0]);
}

void ServiceManager::TellReady(const std::string& url) const {
  if (notify_ != nullptr) notify_(0, ("READY=1\nSTATUS=Serving on " + url).c_str());
}

void ServiceManager::TellStopping() const {
  if (notify_ != nullptr) notify_(0, "STOPPING=1\nSTATUS=Answering what was asked before");
}

int ServiceManager::AwaitSignal(const sigset_t& signals) {
  int received = 0;
  if (watchdog_.count() == 0) {
    sigwait(&signals, &received);
    return received;
  }
  const auto turn = std::chrono::nanoseconds(watchdog_) / kTurnsAWatch;
  const auto whole = std::chrono::duration_cast<std::chrono::seconds>(turn);
  const timespec wait = {whole.count(), (turn - whole).count()};
  do {
    AskServer();
    received = sigtimedwait(&signals, nullptr, &wait);
  } while (received < 0);
  return received;
}

// Never waits: a signal is heard also while the server hangs.
void ServiceManager::AskServer() {
  char answer[4096];
  const ssize_t size = recv(ends_[0], answer, sizeof answer, 0);
  if (size > 0) {
    asked_ = false;
    if (std::string_view(answer, static_cast<std::size_t>(size)).starts_with(kWell)) {
      notify_(0, "WATCHDOG=1");
    }
  }
  if (asked_) return;
  asked_ = send(ends_[0], kQuestion.data(), kQuestion.size(), MSG_NOSIGNAL) > 0;
}

}  // namespace host
