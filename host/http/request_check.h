// Which requests are served at all.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/http/http.h"
#include "host/http/request_head.h"

struct MHD_Connection;

namespace host {

// The names under which this server may be asked. A page of a stranger can have its own name
// lead to this machine (DNS rebinding) and would then read the answers through its visitor's
// browser; but the browser still says that name.
class AllowedHosts {
 public:
  // Always this machine's loopback. With `remote` also any address, which cannot be rebound, and
  // the name of this machine, alone and in ".local". `further`: names of a proxy or the DNS.
  AllowedHosts(bool remote, const std::vector<std::string>& further);

  // `host`: a request's Host, a name or address with or without a port.
  bool Contains(std::string_view host) const;

 private:
  bool remote_;
  std::set<std::string, std::less<>> names_;  // in small letters
};

// Decides by the head: the error answer for a request that is not served, else none.
std::optional<HttpAnswer> RefuseRequest(MHD_Connection* connection, const RequestLine& line,
                                        const RawTarget& target, const AllowedHosts& hosts);

}  // namespace host
