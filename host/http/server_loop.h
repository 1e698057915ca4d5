// The one thread of a server: waits, takes connections and has the library serve them.
#pragma once

#include <atomic>
#include <string>
#include <thread>

#include "host/http/connections.h"
#include "host/http/wakeup.h"

struct MHD_Daemon;

namespace host {

constexpr unsigned kMostConnections = 512;
constexpr unsigned kMostOfOneAddress = 256;

// The library never accepts by itself: once it ran out of descriptors it would wait for one of
// its connections to close, or without any try again without a pause. Here what could not be
// accepted is tried again, ten times a second at the most, whatever happened before.
class ServerLoop {
 public:
  // Takes connections until `stopping`, serves until destroyed; all of these live as long.
  // Throws std::system_error when the system gives no more threads.
  ServerLoop(MHD_Daemon& daemon, int listenSocket, Connections& connections, Wakeup& wakeup,
             const std::atomic<bool>& stopping);
  ~ServerLoop();
  ServerLoop(const ServerLoop&) = delete;
  ServerLoop& operator=(const ServerLoop&) = delete;

 private:
  using Clock = Connections::Clock;

  void Run();
  bool Wait();
  int TimeToWait(bool paused) const;
  void Accept();
  void Add(int socket, const sockaddr& client, socklen_t size);
  bool MakeRoom(const std::string& address);
  void Pause();

  MHD_Daemon& daemon_;
  const int listenSocket_, librarySocket_;
  Connections& connections_;
  Wakeup& wakeup_;
  const std::atomic<bool>& stopping_;
  std::atomic<bool> ending_{false};
  Clock::time_point pausedUntil_, lookedForLateOnes_;
  std::thread thread_;
};

}  // namespace host
