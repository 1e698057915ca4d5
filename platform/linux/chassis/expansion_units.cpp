#include "platform/linux/chassis/expansion_units.h"

#include <algorithm>

#include "platform/linux/base/settings.h"

namespace linux_platform {
namespace {

bool HasFailed(const EnclosurePart& part) { return part.state == EnclosurePart::State::Failed; }

std::string FindFailing(const Enclosure& enclosure) {
  for (const auto* parts : {&enclosure.supplies, &enclosure.fans})
    for (const EnclosurePart& part : *parts)
      if (part.state == EnclosurePart::State::Failing) return part.name;
  return {};
}

ExpansionUnit MakeUnit(const Enclosure& enclosure) {
  const std::vector<EnclosurePart>& supplies = enclosure.supplies;
  ExpansionUnit unit = {enclosure.id, enclosure.product, enclosure.unread, FindFailing(enclosure)};
  unit.fanFailed = std::ranges::any_of(enclosure.fans, HasFailed);
  unit.hasSupplies = !supplies.empty();
  unit.firstSupplyFailed = unit.hasSupplies && HasFailed(supplies.front());
  unit.otherSupplyFailed =
      unit.hasSupplies && std::any_of(supplies.begin() + 1, supplies.end(), HasFailed);
  return unit;
}

bool IsInternal(const std::string& id, const std::vector<std::string_view>& internal) {
  return std::ranges::any_of(internal, [&id](std::string_view word) {
    return word == id || (word.starts_with("0x") && word.substr(2) == id);
  });
}

}  // namespace

std::vector<ExpansionUnit> ListExpansionUnits(const EnclosureSnapshot& snapshot,
                                              const std::vector<std::string_view>& internal) {
  std::vector<ExpansionUnit> units;
  for (const Enclosure& enclosure : snapshot.enclosures)
    if (!IsInternal(enclosure.id, internal)) units.push_back(MakeUnit(enclosure));
  return units;
}

ExpansionUnits ReadExpansionUnits(const Settings& settings) {
  ExpansionUnits read;
  EnclosureSnapshot snapshot;
  std::string reason;
  read.state = ReadSnapshot(snapshot, reason);
  read.trouble = ToTrouble(read.state, std::move(reason));
  if (read.state == SnapshotState::Read)
    read.units = ListExpansionUnits(snapshot, settings.List("ebox.internal"));
  return read;
}

unsigned MaskFailedUnitFans(const std::vector<ExpansionUnit>& units) {
  unsigned mask = 0;
  for (std::size_t slot = 0; slot < std::min(units.size(), kWatchedUnits); ++slot)
    if (units[slot].fanFailed) mask |= 1U << slot;
  return mask;
}

}  // namespace linux_platform
