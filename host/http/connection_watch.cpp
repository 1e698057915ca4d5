#include "host/http/connection_watch.h"

#include <sys/socket.h>

namespace host {

namespace {
constexpr std::chrono::seconds kFirstHead(10);
constexpr std::chrono::seconds kRound(1);
}  // namespace

void ConnectionWatch::Connection::MustEndWithin(std::chrono::seconds time) {
  deadline = (Clock::now() + time).time_since_epoch().count();
}

ConnectionWatch::ConnectionWatch() : thread_([this] { Watch(); }) {}

ConnectionWatch::~ConnectionWatch() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  thread_.join();
}

ConnectionWatch::Connection* ConnectionWatch::Opened(int descriptor) {
  const std::lock_guard lock(mutex_);
  Connection& connection = connections_.emplace_front(descriptor, 0);
  connection.self = connections_.begin();
  connection.MustEndWithin(kFirstHead);
  if (connections_.size() == 1) wake_.notify_all();
  return &connection;
}

void ConnectionWatch::Closed(Connection* connection) {
  const std::lock_guard lock(mutex_);
  connections_.erase(connection->self);
}

// The descriptor cannot be another one's already: the server tells us before it closes it.
// Shut down, it looks to the server as if the client had gone.
void ConnectionWatch::Watch() {
  std::unique_lock lock(mutex_);
  while (!stopping_) {
    if (connections_.empty()) {
      wake_.wait(lock, [this] { return stopping_ || !connections_.empty(); });
    } else {
      wake_.wait_for(lock, kRound, [this] { return stopping_; });
    }
    const Clock::rep now = Clock::now().time_since_epoch().count();
    for (Connection& connection : connections_) {
      if (connection.deadline < now) shutdown(connection.descriptor, SHUT_RDWR);
    }
  }
}

}  // namespace host
