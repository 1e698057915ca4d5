#include "host/http/http_server.h"

#include <microhttpd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <new>
#include <system_error>
#include <thread>
#include <utility>
#include <variant>

#include "host/text/failure.h"

namespace host {
namespace {

constexpr std::chrono::seconds kGracePeriod(10);
// The library is run by our thread. Its own thread would get stuck when exactly 128 events of
// epoll come at once, which version 0.9.75 looks at only after it has waited for another one.
constexpr unsigned kOurThread = MHD_USE_EPOLL | MHD_USE_NO_LISTEN_SOCKET | MHD_ALLOW_SUSPEND_RESUME;
// Never reached, since one at the most comes before another one is gone, and one is our own:
// version 0.9.75 would stand still then.
constexpr unsigned kLibrarysConnections = kMostConnections + 3;
// Request line and headers of one connection, and the head of its answer.
constexpr std::size_t kConnectionMemory = 8192;

HttpAnswer TooBusy() {
  HttpAnswer answer =
      Problem(503, "Too busy", "Too many requests wait for the machine. Ask later.");
  answer.headers.emplace_back("Retry-After", "10");
  return answer;
}

HttpAnswer NoAnswer(const Failure& failure) { return Problem(500, "No answer", failure.what()); }

// Without NULs, at which a path would seem to end: such an escape stays as it is.
std::size_t Unescape(void*, MHD_Connection*, char* text) {
  return std::strstr(text, "%00") == nullptr ? MHD_http_unescape(text) : std::strlen(text);
}

int GetSocket(MHD_Connection* connection) {
  return MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
}

HttpRequest::Lookup LookUpIn(MHD_Connection* connection, MHD_ValueKind kind) {
  return [connection, kind](const char* name) {
    return MHD_lookup_connection_value(connection, kind, name);
  };
}

std::variant<HttpAnswer, MachineQuery> Route(const Site& site, MHD_Connection* connection,
                                             const char* path, RequestsInFlight& inFlight) {
  try {
    return site.Route({path, LookUpIn(connection, MHD_GET_ARGUMENT_KIND),
                       LookUpIn(connection, MHD_HEADER_KIND),
                       [&inFlight] { return inFlight.AnyHangs(); }});
  } catch (const Failure& failure) {
    return NoAnswer(failure);
  }
}

}  // namespace

// Their false or MHD_NO closes the connection.
struct HttpServer::Callbacks {
  static void OnConnection(void* self, MHD_Connection* connection, void**,
                           MHD_ConnectionNotificationCode code) {
    if (code != MHD_CONNECTION_NOTIFY_CLOSED) return;
    static_cast<HttpServer*>(self)->connections_.Remove(GetSocket(connection));
  }

  // Called with the target as it was sent. Without memory the request has no state.
  static void* OnRequestLine(void*, const char* target, MHD_Connection* connection) {
    return new (std::nothrow) RequestInFlight{connection, RawTarget(target)};
  }

  // Called for the head of a request, again when the whole request is there, and once more when
  // the machine has answered it.
  static MHD_Result OnRequest(void* self, MHD_Connection* connection, const char* target,
                              const char* method, const char* version, const char*, std::size_t*,
                              void** state) {
    auto& server = *static_cast<HttpServer*>(self);
    if (*state == nullptr) return server.outOfMemory_.SendTo(connection) ? MHD_YES : MHD_NO;
    auto& request = *static_cast<RequestInFlight*>(*state);
    bool alive = true;
    try {
      if (!request.begun) {
        alive = Begin(server, request, {method, target, version});
      } else if (request.answer) {
        alive = request.answer->SendTo(connection);
      } else {
        alive = Answer(server, request, SplitTarget(target).path);
      }
    } catch (const std::bad_alloc&) {
      alive = server.outOfMemory_.SendTo(connection);
    }
    return alive ? MHD_YES : MHD_NO;
  }

  // An answer to the head alone ends the connection, so a body is never read.
  static bool Begin(HttpServer& server, RequestInFlight& request, const RequestLine& line) {
    request.begun = true;
    ++server.running_;  // before the look at stopping_, so that Stop sees the one or we the other
    server.connections_.BeginRequest(GetSocket(request.connection));
    if (server.stopping_) return false;
    auto refusal = RefuseRequest(request.connection, line, request.target, server.hosts_);
    return !refusal || PreparedAnswer(std::move(*refusal)).SendTo(request.connection);
  }

  static bool Answer(HttpServer& server, RequestInFlight& request, const char* path) {
    auto route = Route(server.site_, request.connection, path, *server.inFlight_);
    if (auto* query = std::get_if<MachineQuery>(&route)) {
      return server.inFlight_->Add(std::move(*query), request) ||
             server.tooBusy_.SendTo(request.connection);
    }
    return PreparedAnswer(std::get<HttpAnswer>(std::move(route))).SendTo(request.connection);
  }

  static void OnCompleted(void* self, MHD_Connection* connection, void** state,
                          MHD_RequestTerminationCode) {
    const std::unique_ptr<RequestInFlight> request(static_cast<RequestInFlight*>(*state));
    *state = nullptr;
    if (!request || !request->begun) return;
    auto& server = *static_cast<HttpServer*>(self);
    server.connections_.EndRequest(GetSocket(connection));
    --server.running_;
  }
};

HttpServer::HttpServer(const ListenSocket& socket, const Site& site, AllowedHosts hosts,
                       ServerWatch watch)
    : site_(site),
      hosts_(std::move(hosts)),
      outOfMemory_(HttpAnswer{503, "text/plain; charset=utf-8", "Out of memory\n"}),
      tooBusy_(TooBusy()),
      daemon_(nullptr, &MHD_stop_daemon) {
  try {
    Start(socket.Descriptor(), watch);
  } catch (const std::system_error&) {
    throw Failure(kUnavailable,
                  "Cannot start the web server: the system gives no more threads or "
                  "open files. Close other programs and try again.");
  }
}

void HttpServer::Start(int listenSocket, const ServerWatch& watch) {
  wakeup_.emplace();
  daemon_.reset(MHD_start_daemon(
      kOurThread, 0, nullptr, nullptr, &Callbacks::OnRequest, this, MHD_OPTION_CONNECTION_LIMIT,
      kLibrarysConnections, MHD_OPTION_CONNECTION_MEMORY_LIMIT, kConnectionMemory,
      MHD_OPTION_NOTIFY_CONNECTION, &Callbacks::OnConnection, this, MHD_OPTION_NOTIFY_COMPLETED,
      &Callbacks::OnCompleted, this, MHD_OPTION_UNESCAPE_CALLBACK, &Unescape, nullptr,
      MHD_OPTION_URI_LOG_CALLBACK, &Callbacks::OnRequestLine, nullptr, MHD_OPTION_END));
  if (!daemon_) throw std::system_error(errno, std::generic_category());
  inFlight_.emplace([this](const MachineQuery& query,
                           std::size_t requests) { return AskMachine(query, requests); },
                    *wakeup_, watch.hangsAfter);
  const sockaddr client = {AF_UNIX, {}};
  if (watch.connection >= 0) {
    MHD_add_connection(daemon_.get(), watch.connection, &client, sizeof client);
  }
  loop_.emplace(*daemon_, listenSocket, connections_, *wakeup_, stopping_);
}

HttpServer::~HttpServer() {
  while (!Stop()) {
  }
}

PreparedAnswer HttpServer::AskMachine(const MachineQuery& query, std::size_t requests) const {
  try {
    try {
      return PreparedAnswer(site_.AskMachine(query, requests));
    } catch (const Failure& failure) {
      return PreparedAnswer(NoAnswer(failure));
    }
  } catch (const std::bad_alloc&) {
    return outOfMemory_;
  }
}

// The library must not be stopped while a connection is suspended.
bool HttpServer::Stop() {
  if (!daemon_) return true;
  stopping_ = true;
  wakeup_->Wake();
  const auto deadline = std::chrono::steady_clock::now() + kGracePeriod;
  while (running_ > 0) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  loop_.reset();
  daemon_.reset();
  return true;
}

}  // namespace host
