#include "host/http/allowed_hosts.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/utsname.h>

#include <algorithm>
#include <cctype>

namespace host {
namespace {

std::string InSmallLetters(std::string_view text) {
  std::string small(text);
  std::transform(small.begin(), small.end(), small.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return small;
}

// "name:8480" and "[::1]:8480" without the port, "name." without the dot of the root.
std::string_view NameOf(std::string_view host) {
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

}  // namespace

HostNames::HostNames(bool remote, const std::vector<std::string>& further)
    : remote_(remote), names_{"localhost"} {
  for (const std::string& name : further) names_.insert(InSmallLetters(NameOf(name)));
  utsname machine = {};
  if (!remote || uname(&machine) != 0) return;  // not gethostname: a scenario answers that
  names_.insert(InSmallLetters(machine.nodename));
  names_.insert(InSmallLetters(machine.nodename) + ".local");
}

bool HostNames::Know(std::string_view host) const {
  const std::string name = InSmallLetters(NameOf(host));
  return names_.contains(name) || IsAddress(name, remote_);
}

}  // namespace host
