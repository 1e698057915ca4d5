// Ends connections whose client takes too long. The library's own timeout starts again with each
// byte: a client that sends one byte a second would keep its connection for ever.
#pragma once

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

namespace host {

class ConnectionDeadlines {
 public:
  // Throws std::system_error when the system gives no more threads.
  ConnectionDeadlines();
  ~ConnectionDeadlines();
  ConnectionDeadlines(const ConnectionDeadlines&) = delete;
  ConnectionDeadlines& operator=(const ConnectionDeadlines&) = delete;

  // In place of the deadline that the socket had. Whatever it sends or reads in between, it is
  // shut down `time` from now; to its server it then looks as if the client had gone.
  void Set(int socket, std::chrono::seconds time);
  // To be called before the socket is closed: its number may soon be another connection's.
  void Remove(int socket);

 private:
  using Clock = std::chrono::steady_clock;

  void ShutDownLateOnes();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<int, Clock::time_point> deadlines_;  // by socket
  bool ending_ = false;
  std::thread thread_;
};

}  // namespace host
