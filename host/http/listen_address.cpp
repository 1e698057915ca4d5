#include "host/http/listen_address.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <memory>

#include "host/text/failure.h"

namespace host {
namespace {

constexpr int kBacklog = 511;

[[noreturn]] void BadAddress(const std::string& text) {
  throw Failure(kUsage, "Cannot listen on \"" + text +
                            "\": that is not an address. Use --listen ADDR:PORT, such as "
                            "127.0.0.1:8480, [::1]:8480 or :0 for any free port.");
}

std::uint16_t ParsePort(std::string_view digits, const std::string& text) {
  std::uint16_t port = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
  if (error != std::errc() || end != digits.data() + digits.size()) BadAddress(text);
  return port;
}

using AddressList = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

AddressList Resolve(const ListenAddress& address) {
  addrinfo hints = {};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
  addrinfo* list = nullptr;
  const int error =
      getaddrinfo(address.host.c_str(), std::to_string(address.port).c_str(), &hints, &list);
  if (error == 0) return {list, freeaddrinfo};
  throw Failure(kUsage, "Cannot listen on " + address.host + ": " + gai_strerror(error) +
                            ". Use an address of this machine, such as 127.0.0.1.");
}

bool IsLoopback(const sockaddr* address) {
  if (address->sa_family == AF_INET) {
    const auto* v4 = reinterpret_cast<const sockaddr_in*>(address);
    return (ntohl(v4->sin_addr.s_addr) >> 24) == IN_LOOPBACKNET;
  }
  const auto* v6 = reinterpret_cast<const sockaddr_in6*>(address);
  return IN6_IS_ADDR_LOOPBACK(&v6->sin6_addr) != 0;
}

bool Listen(int descriptor, const addrinfo& address) {
  const int on = 1;
  setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  return bind(descriptor, address.ai_addr, address.ai_addrlen) == 0 &&
         listen(descriptor, kBacklog) == 0;
}

std::string HowToHelp(int error) {
  if (error == EADDRINUSE) return "another program listens there. Use --port 0 for any free port.";
  if (error == EACCES) return "ports below 1024 need special rights. Use a higher port.";
  if (error == EADDRNOTAVAIL) return "this machine has no such address.";
  return std::string(std::strerror(error)) + ".";
}

}  // namespace

ListenAddress ParseListenAddress(const std::string& text) {
  ListenAddress address;
  const std::size_t bracket = text.rfind(']');
  const std::size_t colon = text.rfind(':');
  const bool hasPort =
      colon != std::string::npos && (bracket == std::string::npos || colon > bracket);
  std::string host = text.substr(0, hasPort ? colon : text.size());
  if (hasPort) address.port = ParsePort(std::string_view(text).substr(colon + 1), text);
  if (host.starts_with('[') && host.ends_with(']')) {
    host = host.substr(1, host.size() - 2);
  } else if (host.find_first_of(":[]") != std::string::npos) {
    BadAddress(text);
  }
  if (!host.empty()) address.host = host;
  return address;
}

ListenSocket::ListenSocket(const ListenAddress& address, bool remoteAllowed) {
  const AddressList list = Resolve(address);
  if (!remoteAllowed && !IsLoopback(list->ai_addr)) {
    throw Failure(kUsage, "Refused to listen on " + address.host +
                              ": everybody who reaches it could read this machine's state. "
                              "Add --allow-remote if that is what you want.");
  }
  descriptor_ = socket(list->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (descriptor_ >= 0 && Listen(descriptor_, *list)) return;
  const int error = errno;
  if (descriptor_ >= 0) close(descriptor_);
  throw Failure(kUnavailable, "Cannot listen on " + address.host + " port " +
                                  std::to_string(address.port) + ": " + HowToHelp(error));
}

ListenSocket::~ListenSocket() { close(descriptor_); }

std::string ListenSocket::Url() const {
  sockaddr_storage address = {};
  socklen_t size = sizeof address;
  getsockname(descriptor_, reinterpret_cast<sockaddr*>(&address), &size);
  char host[NI_MAXHOST] = {}, port[NI_MAXSERV] = {};
  getnameinfo(reinterpret_cast<const sockaddr*>(&address), size, host, sizeof host, port,
              sizeof port, NI_NUMERICHOST | NI_NUMERICSERV);
  const bool v6 = address.ss_family == AF_INET6;
  return std::string("http://") + (v6 ? "[" : "") + host + (v6 ? "]" : "") + ":" + port + "/";
}

}  // namespace host
