// The names under which this server may be asked. A page of a stranger can have its own name
// lead to this machine (DNS rebinding) and would then read the answers through its visitor's
// browser; but the browser still says that name.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace host {

class HostNames {
 public:
  // Always this machine's loopback. With `remote` also any address, which cannot be rebound, and
  // the name of this machine, alone and in ".local". `further`: names of a proxy or the DNS.
  HostNames(bool remote, const std::vector<std::string>& further);

  // `host`: a request's Host, a name or address with or without a port.
  bool Know(std::string_view host) const;

 private:
  bool remote_;
  std::set<std::string, std::less<>> names_;  // in small letters
};

}  // namespace host
