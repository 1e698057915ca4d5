// The open connections of a server, and which of them it ends: those that are late, and the one
// that has been idle longest when another needs its place. The library's own timeout would start
// again with each byte, and it ends none to make room for another.
#pragma once

#include <sys/socket.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>

namespace host {

// For one thread. A connection that was ended stays here until its socket is closed; to the
// library it looks as if the client had gone.
class Connections {
 public:
  using Clock = std::chrono::steady_clock;

  // An address without its port, as bytes.
  static std::string AddressOf(const sockaddr& client);

  // Idle from now on. Throws std::bad_alloc.
  void Add(int socket, std::string address);
  // The head of a request has been read, so that it is not ended to make room. One that was never
  // added is this process's own, and has no bounds.
  void BeginRequest(int socket);
  void EndRequest(int socket);
  // To be called before the socket is closed: its number may soon be another connection's.
  void Remove(int socket);

  std::size_t Size() const { return connections_.size(); }
  bool AnyIdle() const;
  std::size_t CountOf(const std::string& address) const;
  // Ends the one that has been idle longest, of this address if there is one. False when none is
  // idle.
  bool EndLongestIdle(const std::optional<std::string>& address = {});
  void EndLateOnes();

 private:
  enum class State { kIdle, kAnswering, kEnded };
  struct Connection {
    std::string address;
    Clock::time_point since;  // idle
    Clock::time_point deadline;
    State state = State::kIdle;
  };

  static void End(int socket, Connection& connection);

  std::map<int, Connection> connections_;  // by socket
};

}  // namespace host
