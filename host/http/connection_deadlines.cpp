#include "host/http/connection_deadlines.h"

#include <sys/socket.h>

namespace host {

ConnectionDeadlines::ConnectionDeadlines() : thread_([this] { ShutDownLateOnes(); }) {}

ConnectionDeadlines::~ConnectionDeadlines() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void ConnectionDeadlines::Set(int socket, std::chrono::seconds time) {
  const std::lock_guard lock(mutex_);
  deadlines_[socket] = Clock::now() + time;
  if (deadlines_.size() == 1) changed_.notify_all();
}

void ConnectionDeadlines::Remove(int socket) {
  const std::lock_guard lock(mutex_);
  deadlines_.erase(socket);
}

// Looks once a second while there are connections, and sleeps without a timer when there are none:
// an idle server wakes no processor up.
void ConnectionDeadlines::ShutDownLateOnes() {
  std::unique_lock lock(mutex_);
  while (!ending_) {
    changed_.wait(lock, [this] { return ending_ || !deadlines_.empty(); });
    changed_.wait_for(lock, std::chrono::seconds(1), [this] { return ending_; });
    for (const auto& [socket, deadline] : deadlines_) {
      if (deadline < Clock::now()) shutdown(socket, SHUT_RDWR);
    }
  }
}

}  // namespace host
