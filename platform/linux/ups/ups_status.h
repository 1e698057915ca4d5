// What a UPS's words mean, and which UPSes the configuration names. Pure functions.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace linux_platform {

enum class UpsState : std::int32_t { Unknown = 0, OnMains = 1, OnBattery = 2, BatteryLow = 3 };

// The state that NUT's "ups.status" stands for, a set of words in any order. Words
// without a meaning here (CHRG, RB, ALARM, BOOST, ...) do not count.
UpsState JudgeUpsWords(std::string_view words);

struct UpsAddress {
  std::string name;  // empty: the first UPS that the server lists
  std::string host;  // a numeric address; empty when it is not of this machine
  std::uint16_t port = 3493;
  bool operator==(const UpsAddress&) const = default;
};

// "name", "name@host" or "name@host:port", an IPv6 host in brackets. Only loopback
// addresses and "localhost" become a host: no request waits for a name or the network.
UpsAddress ParseUpsAddress(std::string_view text);

// The UPSes of the MONITOR lines of upsmon.conf.
std::vector<UpsAddress> ParseMonitors(std::string_view text);

}  // namespace linux_platform
