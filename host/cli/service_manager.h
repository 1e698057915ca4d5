// Whoever started this process as a service, systemd as a rule: it hears when the server is ready
// and when it ends, and restarts one that no longer answers.
#pragma once

#include <signal.h>

#include <chrono>
#include <string>

namespace host {

// For one thread. Without NOTIFY_SOCKET in the environment nobody listens, and all of it does
// nothing.
class ServiceManager {
 public:
  // Throws Failure(kUnavailable) when somebody listens and the library to speak with is missing.
  ServiceManager();
  ~ServiceManager();
  ServiceManager(const ServiceManager&) = delete;
  ServiceManager& operator=(const ServiceManager&) = delete;

  // The end of a connection for the server, which closes it: over it we ask whether it answers.
  // -1 when nobody wants to know.
  int ServersEnd() const { return ends_[1]; }

  void TellReady(const std::string& url) const;
  void TellStopping() const;

  // Returns the first of these signals that comes. Until then it pings the manager's watchdog each
  // time that the server has answered a request for /healthz.
  int AwaitSignal(const sigset_t& signals);

 private:
  void AskServer();

  int (*notify_)(int unset, const char* state) = nullptr;
  std::chrono::microseconds watchdog_{0};  // so often, at the least; 0: no watchdog
  int ends_[2] = {-1, -1};                 // ours and the server's
  bool asked_ = false;                     // a request waits for its answer
};

}  // namespace host
