#include "platform/linux/chassis/expansion_units.h"

#include <algorithm>

#include "platform/linux/base/settings.h"
#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

using State = EnclosurePart::State;

bool HasFailed(const EnclosurePart& part) {
  return part.state == State::Failed || part.state == State::Gone;
}

// The first part in that state.
std::string FindPart(const Enclosure& enclosure, State state) {
  for (const auto* parts : {&enclosure.supplies, &enclosure.fans})
    for (const EnclosurePart& part : *parts)
      if (part.state == state) return part.name;
  return {};
}

ExpansionUnit MakeUnit(const Enclosure& enclosure) {
  const std::vector<EnclosurePart>& supplies = enclosure.supplies;
  ExpansionUnit unit = {enclosure.id, enclosure.product, enclosure.unread,
                        FindPart(enclosure, State::Failing), FindPart(enclosure, State::Gone)};
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
  const auto internal = settings.List("ebox.internal");
  read.trouble = read.state == SnapshotState::Absent ? MissEnclosure(internal)
                                                     : ToTrouble(read.state, std::move(reason));
  if (read.state == SnapshotState::Read) read.units = ListExpansionUnits(snapshot, internal);
  return read;
}

unsigned MaskFailedUnitFans(const std::vector<ExpansionUnit>& units) {
  unsigned mask = 0;
  for (std::size_t slot = 0; slot < std::min(units.size(), kWatchedUnits); ++slot)
    if (units[slot].fanFailed) mask |= 1U << slot;
  return mask;
}

}  // namespace linux_platform
