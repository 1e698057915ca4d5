// Ends connections whose client takes too long. The library's own timeout restarts with each
// byte; a client that sends one byte a second would keep its place for ever.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>
#include <thread>

namespace host {

class ConnectionWatch {
 public:
  using Clock = std::chrono::steady_clock;

  struct Connection {
    Connection(int socket, Clock::rep due) : descriptor(socket), deadline(due) {}

    int descriptor;
    std::atomic<Clock::rep> deadline;  // of what it is doing now
    std::list<Connection>::iterator self = {};

    // From now on it has this long, whatever it does in between.
    void MustEndWithin(std::chrono::seconds time);
  };

  ConnectionWatch();
  ~ConnectionWatch();
  ConnectionWatch(const ConnectionWatch&) = delete;
  ConnectionWatch& operator=(const ConnectionWatch&) = delete;

  // The head of its first request is due within ten seconds.
  Connection* Opened(int descriptor);
  void Closed(Connection* connection);

 private:
  void Watch();

  std::mutex mutex_;
  std::condition_variable wake_;
  std::list<Connection> connections_;
  bool stopping_ = false;
  std::thread thread_;
};

}  // namespace host
