// Expansion units: enclosures with fans or power supplies of their own, as the collector
// last saw them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/base/snapshot.h"
#include "platform/linux/chassis/enclosure_snapshot.h"

namespace linux_platform {

class Settings;

constexpr std::size_t kWatchedUnits = 24;  // as many bits as a fan mask has

struct ExpansionUnit {
  std::string id, product;  // "500a0b0c0d0e0f10", "JBOD-24"
  std::string unread;       // why it did not answer; then the rest is not known
  std::string failing;      // the first part that works yet and predicts its end: "Fan 2"
  std::string gone;         // the first that is not in its place any more, which counts as failed
  bool fanFailed = false;
  bool hasSupplies = false;
  bool firstSupplyFailed = false;
  bool otherSupplyFailed = false;  // any but the first
  std::vector<EnclosurePart> fans, supplies;

  // As the answer calls the unit of that rank, from 0 on: "JBOD-24-1".
  std::string Name(std::size_t rank) const;
};

// The enclosures in their order, without those whose identifier is one of the words `internal`,
// with or without "0x".
std::vector<ExpansionUnit> ListExpansionUnits(EnclosureSnapshot snapshot,
                                              const std::vector<std::string_view>& internal);

// Not Read: there are no units, or they cannot be known, which is a trouble where there is an
// enclosure.
struct ExpansionUnits {
  SnapshotState state = SnapshotState::Absent;
  std::vector<ExpansionUnit> units;
  Trouble trouble;
};

// Without those that the setting "ebox.internal" names. One small file is read, two where
// there are units.
ExpansionUnits ReadExpansionUnits(const Settings& settings);

// Bit n is set when a fan of the unit at slot n has failed; at most bits 0 to 23.
unsigned MaskFailedUnitFans(const std::vector<ExpansionUnit>& units);

}  // namespace linux_platform
