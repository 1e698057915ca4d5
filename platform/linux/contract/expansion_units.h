// Expansion units: enclosures with fans or power supplies of their own, as the collector
// last saw them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <json/value.h>

namespace linux_platform {

constexpr std::size_t kWatchedUnits = 24;  // as many bits as a fan mask has

struct ExpansionUnit {
  std::string id, product;  // "500a0b0c0d0e0f10", "JBOD-24"
  std::string unread;       // why it did not answer; then the rest is not known
  bool fanFailed = false;
  bool hasSupplies = false;
  bool firstSupplyFailed = false;
  bool otherSupplyFailed = false;  // any but the first
};

// The units of a snapshot of the source "ses", in its order, without the enclosures whose
// identifier stands in `internal` (parted by commas or blanks, with or without "0x").
// Members of the wrong type count as missing.
std::vector<ExpansionUnit> UnitsOf(const Json::Value& snapshot, std::string_view internal);

// Bit n is set when a fan of the unit at slot n has failed; at most bits 0 to 23. For
// component 5. One small file is read, two where there are units.
unsigned FailedUnitFans();

// The calling thread looks afresh.
void ForgetUnits();

}  // namespace linux_platform
