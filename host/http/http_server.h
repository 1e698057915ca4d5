// A site on a socket, through libmicrohttpd: one thread leads its loop at a time, everything is
// bounded.
#pragma once

#include <atomic>
#include <memory>

#include "host/http/allowed_hosts.h"
#include "host/http/bell.h"
#include "host/http/connection_watch.h"
#include "host/http/http.h"
#include "host/http/http_response.h"
#include "host/http/leader_followers.h"
#include "host/http/listen_address.h"
#include "host/http/waiting_room.h"

struct MHD_Daemon;

namespace host {

class HttpServer : private Loop {
 public:
  // Serves until Stop. Throws Failure(kUnavailable) when no thread can be started.
  HttpServer(const ListenSocket& socket, const Site& site, HostNames names);
  ~HttpServer() override;
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  // Takes no new connection and lets the running requests finish, for at most ten
  // seconds. False when one is still running then: the process must end without us.
  bool Stop();

 private:
  struct Exchange;  // one request on its way; libmicrohttpd keeps the pointer for us
  struct Callbacks;

  bool Turn() override;
  void AwaitEvents();
  bool HasWork() const override { return room_.Waiting() > 0; }
  void Work() override;
  bool IsFull() const;

  const Site& site_;
  const HostNames names_;
  const PreparedAnswer outOfMemory_, tooBusy_;
  ConnectionWatch watch_;
  const Bell bell_;  // for the leader
  WaitingRoom room_;
  RepeatedAnswer repeated_;
  std::atomic<bool> stopping_{false};
  MHD_Daemon* daemon_ = nullptr;

  // The leader's.
  FixedAnswers fixed_;
  int running_ = 0;  // requests
  bool connected_ = false;
  bool quiet_ = false;  // no longer listens

  LeaderFollowers threads_;
};

}  // namespace host
