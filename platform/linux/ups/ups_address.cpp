#include "platform/linux/ups/ups_address.h"

#include <arpa/inet.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <climits>

#include "platform/linux/base/descriptor.h"
#include "platform/linux/ups/ups_status.h"

namespace linux_platform {
namespace {

// With a domain and without it, a machine has one name.
bool IsSameHost(std::string_view host, std::string_view own) {
  const std::size_t size = std::min(host.size(), own.size());
  const std::string_view rest = host.size() > size ? host.substr(size) : own.substr(size);
  const bool isShort = host.substr(0, size).find('.') == std::string_view::npos;
  return size > 0 && strncasecmp(host.data(), own.data(), size) == 0 &&
         (rest.empty() || (rest.starts_with('.') && isShort));
}

// Whether the numeric address is one of this machine's: only those can be bound.
bool IsOwnAddress(const std::string& host) {
  sockaddr_in address = {};
  sockaddr_in6 address6 = {};
  address.sin_family = AF_INET, address6.sin6_family = AF_INET6;
  const bool is4 = inet_pton(AF_INET, host.c_str(), &address.sin_addr) == 1;
  if (!is4 && inet_pton(AF_INET6, host.c_str(), &address6.sin6_addr) != 1) return false;
  if (host == "::1" || (is4 && host.starts_with("127."))) return true;
  const Descriptor probe(socket(is4 ? AF_INET : AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  return is4 ? bind(probe.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0
             : bind(probe.Get(), reinterpret_cast<sockaddr*>(&address6), sizeof address6) == 0;
}

std::string LocalHost(const std::string& host, std::string_view ownName) {
  if (host.empty() || host == kThisMachine || IsSameHost(host, ownName)) return kThisMachine;
  return IsOwnAddress(host) ? host : "";
}

}  // namespace

UpsAddress ParseUpsAddress(std::string_view text, std::string_view ownName) {
  UpsAddress address;
  const std::size_t at = std::min(text.find('@'), text.size());
  address.name = text.substr(0, at);
  std::string_view host = text.substr(std::min(at + 1, text.size()));
  std::string_view port;
  if (host.starts_with('[')) {
    const std::size_t end = std::min(host.find(']'), host.size());
    port = host.substr(std::min(end + 1, host.size()));
    host = host.substr(1, end - 1);
  } else if (const std::size_t colon = host.find(':');
             colon != std::string_view::npos && colon == host.rfind(':')) {
    port = host.substr(colon);
    host = host.substr(0, colon);
  }
  if (port.starts_with(':'))
    std::from_chars(port.data() + 1, port.data() + port.size(), address.port);
  address.host = LocalHost(std::string(host), ownName);
  return address;
}

std::vector<std::string> ParseMonitors(std::string_view text) {
  std::vector<std::string> monitors;
  while (!text.empty()) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (NextNutWord(line) == "MONITOR") monitors.emplace_back(NextNutWord(line));
  }
  return monitors;
}

std::vector<std::string> ParseSections(std::string_view text) {
  std::vector<std::string> names;
  while (!text.empty()) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    const std::string_view word = NextNutWord(line);
    if (word.size() > 2 && word.starts_with('[') && word.ends_with(']'))
      names.emplace_back(word.substr(1, word.size() - 2));
  }
  return names;
}

std::string ReadHostName() {
  char name[HOST_NAME_MAX + 1] = {};
  return gethostname(name, sizeof name - 1) == 0 ? name : "";
}

}  // namespace linux_platform
