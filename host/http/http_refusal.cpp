#include "host/http/http_refusal.h"

#include <microhttpd.h>
#include <strings.h>

#include <cstring>
#include <string>
#include <string_view>

#include "host/http/problem.h"

namespace host {
namespace {

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

}  // namespace

// Only HTTP/1.0, which no browser speaks, has no Host.
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

}  // namespace host
