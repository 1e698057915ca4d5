// A site on a socket, by libmicrohttpd: one thread takes connections, reads, routes and sends; what
// needs the machine is done by RequestsInFlight's workers meanwhile. Everything is bounded.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>

#include "host/http/connections.h"
#include "host/http/http.h"
#include "host/http/http_response.h"
#include "host/http/listen_address.h"
#include "host/http/request_check.h"
#include "host/http/requests_in_flight.h"
#include "host/http/server_loop.h"
#include "host/http/wakeup.h"

struct MHD_Daemon;

namespace host {

// How somebody within this process sees whether the server answers.
struct ServerWatch {
  // A connected socket that is served beside all bounds, or -1. The server closes it.
  int connection = -1;
  // A query that asks the machine for so long hangs: nobody waits for its answer any more.
  std::chrono::seconds hangsAfter{60};
};

class HttpServer {
 public:
  // Serves until Stop; socket and site live as long. Throws Failure(kUnavailable) when the
  // system gives no more threads or open files.
  HttpServer(const ListenSocket& socket, const Site& site, AllowedHosts hosts,
             ServerWatch watch = {});
  // Waits for the running requests, however long they take.
  ~HttpServer();
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  // Takes no new connection or request, and lets the running ones finish, within a grace period
  // of ten seconds. False when one still runs then: the process must end without us.
  bool Stop();

 private:
  struct Callbacks;  // what libmicrohttpd calls, in the server's thread

  void Start(int listenSocket, const ServerWatch& watch);

  PreparedAnswer AskMachine(const MachineQuery& query, std::size_t requests) const;

  const Site& site_;
  const AllowedHosts hosts_;
  const PreparedAnswer outOfMemory_, tooBusy_;  // made before they are needed
  std::atomic<int> running_{0};                 // requests
  std::atomic<bool> stopping_{false};
  Connections connections_;
  std::optional<Wakeup> wakeup_;
  std::unique_ptr<MHD_Daemon, void (*)(MHD_Daemon*)> daemon_;
  std::optional<RequestsInFlight> inFlight_;
  std::optional<ServerLoop> loop_;
};

}  // namespace host
