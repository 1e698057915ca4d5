#include "host/http/http_server.h"

#include <microhttpd.h>
#include <poll.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>
#include <system_error>
#include <utility>

#include "host/http/http_refusal.h"
#include "host/http/problem.h"
#include "host/text/failure.h"

namespace host {
namespace {

constexpr unsigned kWorkers = 4;
constexpr std::size_t kWaiting = 64;  // half a minute's work when each answer takes two seconds
constexpr unsigned kConnections = 512;
constexpr unsigned kConnectionsOfOne = 256;  // of one address: no client takes all places
constexpr unsigned kIdleSeconds = 30;
constexpr std::chrono::seconds kNextRequest(30);
constexpr std::chrono::seconds kOneRequest(60);
// Request line and headers of one connection, and the head of its answer.
constexpr std::size_t kConnectionMemory = 8192;
constexpr std::chrono::seconds kPatience(10);
// The library takes about ten new connections a turn; a burst gets in before it is worked on.
constexpr int kTurnsOfOneBurst = 8;

constexpr unsigned long long kLongestPoll = 60000;

template <MHD_ValueKind Kind>
const char* ValueOf(const void* connection, const char* name) {
  auto* mutableConnection = static_cast<MHD_Connection*>(const_cast<void*>(connection));
  return MHD_lookup_connection_value(mutableConnection, Kind, name);
}

HttpAnswer TooBusy() {
  HttpAnswer answer =
      Problem(503, "Too busy", "Too many requests wait for the machine. Ask later.");
  answer.headers.emplace_back("Retry-After", "10");
  return answer;
}

// Without NULs, at which a path would seem to end: such an escape stays as it is.
std::size_t Unescape(void*, MHD_Connection*, char* text) {
  return std::strstr(text, "%00") == nullptr ? MHD_http_unescape(text) : std::strlen(text);
}

ConnectionWatch::Connection* WatchedOf(MHD_Connection* connection) {
  const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
  return static_cast<ConnectionWatch::Connection*>(info->socket_context);
}

}  // namespace

struct HttpServer::Exchange {
  std::shared_ptr<Waiter> waiter = nullptr;
};

// All within the leader's turn.
struct HttpServer::Callbacks {
  static void OnConnection(void* self, MHD_Connection* connection, void** context,
                           MHD_ConnectionNotificationCode code) {
    auto& server = *static_cast<HttpServer*>(self);
    if (code == MHD_CONNECTION_NOTIFY_CLOSED) {
      server.watch_.Closed(static_cast<ConnectionWatch::Connection*>(*context));
      return;
    }
    const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    *context = server.watch_.Opened(info->connect_fd);
    server.connected_ = true;
  }

  // Called for the head of a request, again when the whole request is there, and for one that
  // waits once more in each turn and when its answer is there. An answer to the head alone ends
  // the connection.
  static MHD_Result OnRequest(void* self, MHD_Connection* connection, const char* path,
                              const char* method, const char*, const char*, std::size_t*,
                              void** state) {
    auto& server = *static_cast<HttpServer*>(self);
    auto* exchange = static_cast<Exchange*>(*state);
    bool alive = true;
    try {
      if (exchange == nullptr) {
        alive = Start(server, connection, method, state);
      } else if (exchange->waiter != nullptr) {
        const auto answer =
            server.room_.AnswerOf(*exchange->waiter, server.threads_.WorkFollowsTurn());
        if (answer) alive = answer->SendTo(connection);
      } else {
        alive = React(server, connection, path, *exchange);
      }
    } catch (const std::bad_alloc&) {
      alive = server.outOfMemory_.SendTo(connection);
    }
    return alive ? MHD_YES : MHD_NO;
  }

  static bool Start(HttpServer& server, MHD_Connection* connection, const char* method,
                    void** state) {
    *state = new Exchange();
    ++server.running_;
    WatchedOf(connection)->MustEndWithin(kOneRequest);
    std::optional<HttpAnswer> refusal = Refusal(connection, method, server.names_);
    return !refusal || PreparedAnswer(std::move(*refusal)).SendTo(connection);
  }

  static bool React(HttpServer& server, MHD_Connection* connection, const char* path,
                    Exchange& exchange) {
    const HttpRequest request{path, &ValueOf<MHD_GET_ARGUMENT_KIND>, &ValueOf<MHD_HEADER_KIND>,
                              connection};
    Reaction reaction = ReactionOf(server.site_, request);
    if (const auto* fixed = std::get_if<const HttpAnswer*>(&reaction)) {
      return server.fixed_.Prepared(**fixed).SendTo(connection);
    }
    if (auto* answer = std::get_if<HttpAnswer>(&reaction)) {
      return PreparedAnswer(std::move(*answer)).SendTo(connection);
    }
    if (server.IsFull()) return server.tooBusy_.SendTo(connection);
    exchange.waiter = server.room_.Enter(connection, std::get<Question>(std::move(reaction)));
    if (!server.threads_.WorkFollowsTurn()) server.room_.AnswerOf(*exchange.waiter, false);
    return true;
  }

  static Reaction ReactionOf(const Site& site, const HttpRequest& request) {
    try {
      return site.React(request);
    } catch (const Failure& failure) {
      return Problem(500, "No answer", failure.what());
    }
  }

  static void OnCompleted(void* self, MHD_Connection* connection, void** state,
                          MHD_RequestTerminationCode) {
    if (*state == nullptr) return;
    WatchedOf(connection)->MustEndWithin(kNextRequest);
    delete static_cast<Exchange*>(*state);
    *state = nullptr;
    --static_cast<HttpServer*>(self)->running_;
  }
};

HttpServer::HttpServer(const ListenSocket& socket, const Site& site, HostNames names)
    : site_(site),
      names_(std::move(names)),
      outOfMemory_(HttpAnswer{503, "text/plain; charset=utf-8", "Out of memory\n"}),
      tooBusy_(TooBusy()),
      room_(bell_),
      threads_(*this, kWorkers) {
  daemon_ = MHD_start_daemon(
      MHD_USE_EPOLL | MHD_USE_TURBO | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr, nullptr,
      &Callbacks::OnRequest, this, MHD_OPTION_LISTEN_SOCKET, socket.Descriptor(),
      MHD_OPTION_CONNECTION_LIMIT, kConnections, MHD_OPTION_PER_IP_CONNECTION_LIMIT,
      kConnectionsOfOne, MHD_OPTION_CONNECTION_TIMEOUT, kIdleSeconds,
      MHD_OPTION_CONNECTION_MEMORY_LIMIT, kConnectionMemory, MHD_OPTION_NOTIFY_CONNECTION,
      &Callbacks::OnConnection, this, MHD_OPTION_NOTIFY_COMPLETED, &Callbacks::OnCompleted, this,
      MHD_OPTION_UNESCAPE_CALLBACK, &Unescape, nullptr, MHD_OPTION_STRICT_FOR_CLIENT, 1,
      MHD_OPTION_END);
  try {
    if (daemon_ != nullptr) threads_.Start();
  } catch (const std::system_error&) {
    MHD_stop_daemon(std::exchange(daemon_, nullptr));
  }
  if (daemon_ == nullptr) {
    throw Failure(kUnavailable,
                  "Cannot start the web server: the system gives no more threads or "
                  "open files. Close other programs and try again.");
  }
}

HttpServer::~HttpServer() { Stop(); }

bool HttpServer::IsFull() const {
  return room_.Waiting() >= kWaiting && !threads_.WorkFollowsTurn();
}

// The library by itself does not learn of connections that others resumed.
void HttpServer::AwaitEvents() {
  unsigned long long due = 0;  // milliseconds
  const bool bounded = MHD_get_timeout(daemon_, &due) == MHD_YES;
  if (bounded && due == 0) return;
  const auto* info = MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_EPOLL_FD);
  pollfd events[] = {{info->epoll_fd, POLLIN, 0}, {bell_.Descriptor(), POLLIN, 0}};
  poll(events, std::size(events), bounded ? static_cast<int>(std::min(due, kLongestPoll)) : -1);
  if (events[1].revents != 0) bell_.Hush();
}

bool HttpServer::Turn() {
  AwaitEvents();
  MHD_run(daemon_);
  for (int more = 0; std::exchange(connected_, false) && more < kTurnsOfOneBurst; ++more) {
    MHD_run(daemon_);
  }
  if (!stopping_) return true;
  if (!std::exchange(quiet_, true)) MHD_quiesce_daemon(daemon_);
  return running_ > 0;
}

void HttpServer::Work() {
  const std::optional<Query> query = room_.Begin();
  if (!query) return;
  try {
    HttpAnswer answer;
    try {
      answer = site_.Ask(query->question, query->waiters.size());
    } catch (const Failure& failure) {
      answer = Problem(500, "No answer", failure.what());
    }
    room_.End(*query, repeated_.Prepared(std::move(answer)));
  } catch (const std::bad_alloc&) {
    room_.End(*query, outOfMemory_);
  }
}

bool HttpServer::Stop() {
  if (daemon_ == nullptr) return true;
  stopping_ = true;
  bell_.Ring();
  if (!threads_.JoinWithin(kPatience)) return false;
  MHD_stop_daemon(std::exchange(daemon_, nullptr));
  return true;
}

}  // namespace host
