// A site on a socket, through libmicrohttpd: a few epoll threads, everything bounded.
#pragma once

#include <atomic>
#include <memory>

#include "host/connection_watch.h"
#include "host/host_names.h"
#include "host/http.h"
#include "host/listen_address.h"
#include "host/worker_pool.h"

struct MHD_Daemon;

namespace vela::host {

class HttpServer {
 public:
  // Serves until Stop. Throws Failure(kUnavailable) when no thread can be started.
  HttpServer(const ListenSocket& socket, const Site& site, HostNames names);
  ~HttpServer();
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  // Takes no new connection and lets the running requests finish, for at most ten
  // seconds. False when one is still running then: the process must end without us.
  bool Stop();

  // The callbacks' side.
  const Site& GetSite() const { return site_; }
  const HostNames& Names() const { return names_; }
  WorkerPool& Workers() { return workers_; }
  ConnectionWatch& Watch() { return watch_; }
  void RequestStarted() { ++running_; }
  void RequestEnded() { --running_; }

 private:
  const Site& site_;
  const HostNames names_;
  WorkerPool workers_;
  ConnectionWatch watch_;
  std::atomic<int> running_{0};
  MHD_Daemon* daemon_ = nullptr;
};

}  // namespace vela::host
