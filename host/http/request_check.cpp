#include "host/http/request_check.h"

#include <arpa/inet.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <strings.h>
#include <sys/utsname.h>

#include <algorithm>
#include <cctype>
#include <cstring>

namespace host {
namespace {

std::string ToLower(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

// "name:8480" and "[::1]:8480" without port and brackets, "name." without the root's dot.
std::string_view StripPort(std::string_view host) {
  const std::size_t bracket = host.rfind(']');
  const std::size_t colon = host.rfind(':');
  if (colon != std::string_view::npos && (bracket == std::string_view::npos || bracket < colon)) {
    host.remove_suffix(host.size() - colon);
  }
  if (host.starts_with('[') && host.ends_with(']')) return host.substr(1, host.size() - 2);
  if (host.ends_with('.')) host.remove_suffix(1);
  return host;
}

bool IsAddress(const std::string& name, bool remote) {
  in_addr v4 = {};
  if (inet_pton(AF_INET, name.c_str(), &v4) == 1) {
    return remote || ntohl(v4.s_addr) >> 24 == IN_LOOPBACKNET;
  }
  in6_addr v6 = {};
  return inet_pton(AF_INET6, name.c_str(), &v6) == 1 && (remote || IN6_IS_ADDR_LOOPBACK(&v6) != 0);
}

bool IsReading(const char* method) {
  return std::strcmp(method, MHD_HTTP_METHOD_GET) == 0 ||
         std::strcmp(method, MHD_HTTP_METHOD_HEAD) == 0;
}

// The headers that decide whether a request is served.
struct RequestHead {
  std::string_view host;
  unsigned hosts = 0;
  bool body = false;
};

MHD_Result ReadHeader(void* requestHead, MHD_ValueKind, const char* name, const char* value) {
  auto& head = *static_cast<RequestHead*>(requestHead);
  if (strcasecmp(name, "Host") == 0) {
    head.host = value;
    ++head.hosts;
  } else if (strcasecmp(name, "Transfer-Encoding") == 0) {
    head.body = true;
  } else if (strcasecmp(name, "Content-Length") == 0) {
    head.body = std::strcmp(value, "0") != 0;
  }
  return MHD_YES;
}

}  // namespace

AllowedHosts::AllowedHosts(bool remote, const std::vector<std::string>& further)
    : remote_(remote), names_{"localhost"} {
  for (const std::string& name : further) names_.insert(ToLower(StripPort(name)));
  utsname machine = {};
  if (!remote || uname(&machine) != 0) return;  // not gethostname: a scenario answers that
  names_.insert(ToLower(machine.nodename));
  names_.insert(ToLower(machine.nodename) + ".local");
}

bool AllowedHosts::Contains(std::string_view host) const {
  const std::string name = ToLower(StripPort(host));
  return names_.contains(name) || IsAddress(name, remote_);
}

// A host in the target stands for the header's. Only HTTP/1.0, which no browser speaks, has none.
std::optional<HttpAnswer> RefuseRequest(MHD_Connection* connection, const RequestLine& line,
                                        const RawTarget& target, const AllowedHosts& hosts) {
  if (!IsWellFormed(connection, line, target)) {
    return Problem(400, "Bad request",
                   "The head of this request can be read in more than one way.");
  }
  if (!IsReading(line.method)) {
    HttpAnswer answer = Problem(405, "Method not allowed", "Only GET and HEAD are served here.");
    answer.headers.emplace_back("Allow", "GET, HEAD");
    return answer;
  }
  RequestHead head;
  MHD_get_connection_values(connection, MHD_HEADER_KIND, &ReadHeader, &head);
  if (head.body) return Problem(413, "No body", "A request here has no body. Leave it out.");
  if (head.hosts > 1) return Problem(400, "Two hosts", "A request names one Host.");
  if (head.hosts == 0 && std::strcmp(line.version, MHD_HTTP_VERSION_1_0) != 0) {
    return Problem(400, "No host", "A request names its Host.");
  }
  const std::string_view named = SplitTarget(line.target).host;
  const std::string host(named.empty() ? head.host : named);
  if ((named.empty() && head.hosts == 0) || hosts.Contains(host)) return std::nullopt;
  return Problem(421, "Not a name of this server",
                 "This server does not answer for the host \"" + host +
                     "\", since another site's page could be asking. Ask for its address, or "
                     "start vela-health serve with --host-name and this name if it is yours.");
}

}  // namespace host
