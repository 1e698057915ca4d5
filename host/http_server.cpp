#include "host/http_server.h"

#include <microhttpd.h>
#include <strings.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <new>
#include <optional>
#include <thread>
#include <utility>

#include "host/failure.h"
#include "host/problem.h"

namespace vela::host {
namespace {

constexpr unsigned kWorkers = 4;
constexpr std::size_t kQueue = 64;  // half a minute's work when each answer takes two seconds
constexpr unsigned kConnections = 512;
constexpr unsigned kConnectionsOfOne = 256;  // of one address: no client takes all places
constexpr unsigned kIdleSeconds = 30;
constexpr std::chrono::seconds kNextRequest(30);
constexpr std::chrono::seconds kOneRequest(60);
// Request line and headers of one connection, and the head of its answer.
constexpr std::size_t kConnectionMemory = 8192;
constexpr std::chrono::seconds kPatience(10);

// One request on its way; libmicrohttpd keeps the pointer for us.
struct Exchange {
  HttpServer* server;
  bool waited = false;
  HttpAnswer answer = {};
};

template <MHD_ValueKind Kind>
const char* ValueOf(const void* connection, const char* name) {
  auto* mutableConnection = static_cast<MHD_Connection*>(const_cast<void*>(connection));
  return MHD_lookup_connection_value(mutableConnection, Kind, name);
}

HttpAnswer AnswerOrProblem(const Site& site, const HttpRequest& request) noexcept {
  try {
    return site.Answer(request);
  } catch (const Failure& failure) {
    return Problem(500, "No answer", failure.what());
  } catch (const std::bad_alloc&) {
    return {503, "text/plain; charset=utf-8", "Out of memory\n"};  // short enough for no heap
  }
}

constexpr std::pair<const char*, const char*> kHeaders[] = {
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src data:; "
     "frame-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'self'"},
};

// The body goes over to the server without a copy.
MHD_Response* ResponseWithBody(HttpAnswer& answer) {
  if (!answer.fixed.empty()) {
    auto* bytes = const_cast<char*>(answer.fixed.data());  // the library only reads them
    return MHD_create_response_from_buffer(answer.fixed.size(), bytes, MHD_RESPMEM_PERSISTENT);
  }
  auto* body = new std::string(std::move(answer.body));
  return MHD_create_response_from_buffer_with_free_callback_cls(
      body->size(), body->data(), [](void* owner) { delete static_cast<std::string*>(owner); },
      body);
}

MHD_Response* ResponseFor(HttpAnswer& answer) {
  MHD_Response* response = ResponseWithBody(answer);
  MHD_add_response_header(response, "Content-Type", answer.contentType);
  for (const auto& [name, value] : kHeaders) MHD_add_response_header(response, name, value);
  for (const auto& [name, value] : answer.headers) {
    MHD_add_response_header(response, name, value.c_str());
  }
  return response;
}

MHD_Result Send(MHD_Connection* connection, HttpAnswer& answer) {
  MHD_Response* response = ResponseFor(answer);
  const MHD_Result queued = MHD_queue_response(connection, answer.status, response);
  MHD_destroy_response(response);
  return queued;
}

MHD_Result AnswerLater(MHD_Connection* connection, Exchange& exchange, const HttpRequest& request) {
  MHD_suspend_connection(connection);
  exchange.waited = true;
  const bool queued = exchange.server->Workers().Run([connection, &exchange, request] {
    exchange.answer = AnswerOrProblem(exchange.server->GetSite(), request);
    MHD_resume_connection(connection);
  });
  if (queued) return MHD_YES;
  exchange.answer = Problem(503, "Too busy", "Too many requests wait for the machine. Ask later.");
  exchange.answer.headers.emplace_back("Retry-After", "10");
  MHD_resume_connection(connection);
  return MHD_YES;
}

bool IsReading(const char* method) {
  return std::strcmp(method, MHD_HTTP_METHOD_GET) == 0 ||
         std::strcmp(method, MHD_HTTP_METHOD_HEAD) == 0;
}

// What decides whether a request is served at all.
struct Head {
  std::string_view host;
  unsigned hosts = 0;
  bool body = false;
};

MHD_Result AddToHead(void* head, MHD_ValueKind, const char* name, const char* value) {
  auto& known = *static_cast<Head*>(head);
  if (strcasecmp(name, "Host") == 0) {
    known.host = value;
    ++known.hosts;
  } else if (strcasecmp(name, "Transfer-Encoding") == 0) {
    known.body = true;
  } else if (strcasecmp(name, "Content-Length") == 0) {
    known.body = std::strcmp(value, "0") != 0;
  }
  return MHD_YES;
}

// None for a request that is served. Only HTTP/1.0, which no browser speaks, has no Host.
std::optional<HttpAnswer> Refusal(MHD_Connection* connection, const char* method,
                                  const HostNames& names) {
  if (!IsReading(method)) {
    HttpAnswer answer = Problem(405, "Method not allowed", "Only GET and HEAD are served here.");
    answer.headers.emplace_back("Allow", "GET, HEAD");
    return answer;
  }
  Head head;
  MHD_get_connection_values(connection, MHD_HEADER_KIND, &AddToHead, &head);
  if (head.body) return Problem(413, "No body", "A request here has no body. Leave it out.");
  if (head.hosts > 1) return Problem(400, "Two hosts", "A request names one Host.");
  if (head.hosts == 0 || names.Know(head.host)) return std::nullopt;
  return Problem(421, "Not a name of this server",
                 "This server does not answer for the host \"" + std::string(head.host) +
                     "\", since another site's page could be asking. Ask for its address, or "
                     "start vela-health serve with --host-name and this name if it is yours.");
}

// Without NULs, at which a path would seem to end: such an escape stays as it is.
std::size_t Unescape(void*, MHD_Connection*, char* text) {
  return std::strstr(text, "%00") == nullptr ? MHD_http_unescape(text) : std::strlen(text);
}

ConnectionWatch::Connection* WatchedOf(MHD_Connection* connection) {
  const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
  return static_cast<ConnectionWatch::Connection*>(info->socket_context);
}

void OnConnection(void* self, MHD_Connection* connection, void** context,
                  MHD_ConnectionNotificationCode code) {
  ConnectionWatch& watch = static_cast<HttpServer*>(self)->Watch();
  if (code == MHD_CONNECTION_NOTIFY_CLOSED) {
    watch.Closed(static_cast<ConnectionWatch::Connection*>(*context));
    return;
  }
  const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
  *context = watch.Opened(info->connect_fd);
}

// Called for the head of a request, again when the whole request is there, and once more
// when a worker has its answer. An answer to the head alone ends the connection.
MHD_Result OnRequest(void* self, MHD_Connection* connection, const char* path, const char* method,
                     const char*, const char*, std::size_t*, void** state) {
  auto* server = static_cast<HttpServer*>(self);
  if (*state == nullptr) {
    server->RequestStarted();
    WatchedOf(connection)->MustEndWithin(kOneRequest);
    *state = new Exchange{server};
    std::optional<HttpAnswer> refusal = Refusal(connection, method, server->Names());
    return refusal ? Send(connection, *refusal) : MHD_YES;
  }
  auto& exchange = *static_cast<Exchange*>(*state);
  if (exchange.waited) return Send(connection, exchange.answer);
  const HttpRequest request{path, &ValueOf<MHD_GET_ARGUMENT_KIND>, &ValueOf<MHD_HEADER_KIND>,
                            connection};
  if (server->GetSite().MayWait(path)) return AnswerLater(connection, exchange, request);
  exchange.answer = AnswerOrProblem(server->GetSite(), request);
  return Send(connection, exchange.answer);
}

void OnCompleted(void* self, MHD_Connection* connection, void** state, MHD_RequestTerminationCode) {
  if (*state == nullptr) return;
  WatchedOf(connection)->MustEndWithin(kNextRequest);
  delete static_cast<Exchange*>(*state);
  *state = nullptr;
  static_cast<HttpServer*>(self)->RequestEnded();
}

}  // namespace

HttpServer::HttpServer(const ListenSocket& socket, const Site& site, HostNames names)
    : site_(site), names_(std::move(names)), workers_(kWorkers, kQueue) {
  const unsigned threads = std::clamp(std::thread::hardware_concurrency(), 2U, 4U);
  daemon_ = MHD_start_daemon(
      MHD_USE_EPOLL_INTERNAL_THREAD | MHD_USE_TURBO | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr, nullptr,
      &OnRequest, this, MHD_OPTION_LISTEN_SOCKET, socket.Descriptor(), MHD_OPTION_THREAD_POOL_SIZE,
      threads, MHD_OPTION_CONNECTION_LIMIT, kConnections, MHD_OPTION_PER_IP_CONNECTION_LIMIT,
      kConnectionsOfOne, MHD_OPTION_CONNECTION_TIMEOUT, kIdleSeconds,
      MHD_OPTION_CONNECTION_MEMORY_LIMIT, kConnectionMemory, MHD_OPTION_NOTIFY_CONNECTION,
      &OnConnection, this, MHD_OPTION_NOTIFY_COMPLETED, &OnCompleted, this,
      MHD_OPTION_UNESCAPE_CALLBACK, &Unescape, nullptr, MHD_OPTION_STRICT_FOR_CLIENT, 1,
      MHD_OPTION_END);
  if (daemon_ == nullptr) {
    throw Failure(kUnavailable,
                  "Cannot start the web server: the system gives no more threads or "
                  "open files. Close other programs and try again.");
  }
}

HttpServer::~HttpServer() { Stop(); }

bool HttpServer::Stop() {
  if (daemon_ == nullptr) return true;
  MHD_quiesce_daemon(daemon_);
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (running_ > 0 && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  if (running_ > 0) return false;
  MHD_stop_daemon(std::exchange(daemon_, nullptr));
  return true;
}

}  // namespace vela::host
