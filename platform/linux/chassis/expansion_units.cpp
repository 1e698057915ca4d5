#include "platform/linux/chassis/expansion_units.h"

#include <algorithm>
#include <utility>

#include "platform/linux/base/settings.h"
#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

using State = EnclosurePart::State;

bool HasFailed(const EnclosurePart& part) { return part.HasFailed(); }

// The first part in that state.
std::string FindPart(const Enclosure& enclosure, State state) {
  for (const auto* parts : {&enclosure.supplies, &enclosure.fans})
    for (const EnclosurePart& part : *parts)
      if (part.state == state) return part.name;
  return {};
}

ExpansionUnit MakeUnit(Enclosure&& enclosure) {
  const std::vector<EnclosurePart>& supplies = enclosure.supplies;
  ExpansionUnit unit;
  unit.failing = FindPart(enclosure, State::Failing);
  unit.gone = FindPart(enclosure, State::Gone);
  unit.fanFailed = std::ranges::any_of(enclosure.fans, HasFailed);
  unit.hasSupplies = !supplies.empty();
  unit.firstSupplyFailed = unit.hasSupplies && HasFailed(supplies.front());
  unit.otherSupplyFailed =
      unit.hasSupplies && std::any_of(supplies.begin() + 1, supplies.end(), HasFailed);
  unit.id = std::move(enclosure.id);
  unit.product = std::move(enclosure.product);
  unit.unread = std::move(enclosure.unread);
  unit.fans = std::move(enclosure.fans);
  unit.supplies = std::move(enclosure.supplies);
  return unit;
}

bool IsInternal(const std::string& id, const std::vector<std::string_view>& internal) {
  return std::ranges::any_of(internal, [&id](std::string_view word) {
    return word == id || (word.starts_with("0x") && word.substr(2) == id);
  });
}

// An enclosure that everybody sees, while only root may ask for its parts.
Trouble MissEnclosure(const std::vector<std::string_view>& internal) {
  const std::string folder = Sys("/class/enclosure");
  for (const std::string& name : NamesIn(folder)) {
    std::string id = Attribute(Concatenate(folder, "/", name, "/id"));
    if (id.starts_with("0x")) id.erase(0, 2);
    const std::string model = Attribute(Concatenate(folder, "/", name, "/device/model"));
    if (!IsInternal(id, internal))
      return MissCollector("only root may ask for the fans and supplies of the enclosure " +
                           (id.empty() ? name : Concatenate(model, " ", id)));
  }
  return {};
}

}  // namespace

std::string ExpansionUnit::Name(std::size_t rank) const {
  return product.empty() ? id : Concatenate(product, "-", std::to_string(rank + 1));
}

std::vector<ExpansionUnit> ListExpansionUnits(EnclosureSnapshot snapshot,
                                              const std::vector<std::string_view>& internal) {
  std::vector<ExpansionUnit> units;
  for (Enclosure& enclosure : snapshot.enclosures)
    if (!IsInternal(enclosure.id, internal)) units.push_back(MakeUnit(std::move(enclosure)));
  return units;
}

ExpansionUnits ReadExpansionUnits(const Settings& settings) {
  ExpansionUnits read;
  EnclosureSnapshot snapshot;
  std::string reason;
  read.state = ReadSnapshot(snapshot, reason);
  const auto internal = settings.List("ebox.internal");
  read.trouble = read.state == SnapshotState::Absent ? MissEnclosure(internal)
                                                     : ToTrouble(read.state, std::move(reason));
  if (read.state == SnapshotState::Read)
    read.units = ListExpansionUnits(std::move(snapshot), internal);
  return read;
}

unsigned MaskFailedUnitFans(const std::vector<ExpansionUnit>& units) {
  unsigned mask = 0;
  for (std::size_t slot = 0; slot < std::min(units.size(), kWatchedUnits); ++slot)
    if (units[slot].fanFailed) mask |= 1U << slot;
  return mask;
}

}  // namespace linux_platform
