// Which UPSes are asked for, and where.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace linux_platform {

// The host of an address that means this machine, wherever on it the server listens.
constexpr const char* kThisMachine = "localhost";

struct UpsAddress {
  std::string name;  // empty: all that the server lists
  std::string host;  // kThisMachine or a numeric address of it; empty when it is another's
  std::uint16_t port = 3493;
};

// "name", "name@host" or "name@host:port", an IPv6 host in brackets. `ownName` is this machine's
// host name, with or without its domain. Nothing is looked up in the network: no request waits
// for a name.
UpsAddress ParseUpsAddress(std::string_view text, std::string_view ownName);

// What the MONITOR lines of upsmon.conf name, "rack@localhost:3493"; users and passwords stay
// behind.
std::vector<std::string> ParseMonitors(std::string_view text);

// What the sections of ups.conf are called: "rack" of "[rack]".
std::vector<std::string> ParseSections(std::string_view text);

// This machine's, as the kernel has it.
std::string ReadHostName();

}  // namespace linux_platform
