#include "platform/linux/parts/bays.h"

#include <algorithm>

#include "common/text.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/parts/storage_parts.h"

namespace linux_platform {
namespace {

using source_status::PartKind, source_status::PartState;

// "ata3" of "ata3", "1-2.3" of "usb 1-2.3".
std::string_view GetPortName(std::string_view port) { return port.substr(port.rfind(' ') + 1); }

bool SitsAt(const VELAPart& disk, const VELAPart& place) {
  return common::ViewText(disk.bay) == common::ViewText(place.bay) &&
         common::ViewText(disk.slot) == common::ViewText(place.slot);
}

}  // namespace

Bays::Bays(const StorageSources& sources)
    : ports_(sources.current.List("bays")),
      maxDisks_(ToNumber(common::OrEmpty(sources.factory.Text("maxdisks"))).value_or(0)) {
  const std::vector<ExpansionUnit>& units = sources.units.units;
  for (const std::string& name : NamesIn(Sys("/class/enclosure"))) {
    Enclosure& added = enclosures_.emplace_back(Enclosure{name, ReadEnclosureId(name), ""});
    const auto unit = std::ranges::find(units, added.id, &ExpansionUnit::id);
    if (unit == units.end()) {
      ++own_;
      continue;
    }
    added.unit = unit->product + "-" + std::to_string(unit - units.begin() + 1);
  }
}

// Of several enclosures that are no units nobody knows which one has the machine's bays.
void Bays::Place(const EnclosureSlot& slot, VELAPart& part) const {
  if (slot.number.empty()) return;
  const auto known = std::ranges::find(enclosures_, slot.enclosure, &Enclosure::id);
  const std::string unit = known == enclosures_.end() ? "" : known->unit;
  if (unit.empty() && own_ <= 1) return common::FillField(part.bay, slot.number);
  common::FillField(part.slot, (unit.empty() ? slot.enclosure : unit) + ", " + slot.number);
}

void Bays::Place(const DiskIdentity& disk, VELAPart& part) const {
  common::FillField(part.port, disk.port);
  const auto port = std::ranges::find(ports_, GetPortName(disk.port));
  if (disk.port.empty() || port == ports_.end()) return Place(disk.slot, part);
  common::FillField(part.bay, std::to_string(port - ports_.begin() + 1));
}

void Bays::TellEmpty(const std::vector<VELAPart>& disks, const TakePart& take) const {
  std::vector<VELAPart> places;
  const auto add = [&places]() -> VELAPart& {
    return places.emplace_back(MakePart(PartKind::Disk, PartState::Empty, ""));
  };
  for (std::size_t bay = 0; bay < ports_.size(); ++bay) {
    VELAPart& place = add();
    common::FillField(place.bay, std::to_string(bay + 1));
    common::FillField(place.port, ports_[bay]);
  }
  for (const Enclosure& enclosure : enclosures_)
    for (const std::string& slot : NamesIn(Sys("/class/enclosure/", enclosure.name)))
      if (Attribute(Sys("/class/enclosure/", enclosure.name, "/", slot, "/status")) ==
          "not installed")
        Place(EnclosureSlot{enclosure.id, ToSlotNumber(slot)}, add());
  // Nobody says where the bays are: then they are counted.
  for (auto bay = static_cast<std::int64_t>(disks.size()); places.empty() && bay < maxDisks_; ++bay)
    take(MakePart(PartKind::Disk, PartState::Empty, "Bay " + std::to_string(bay + 1)));
  for (VELAPart& place : places) {
    const auto isTaken = [&place](const VELAPart& disk) { return SitsAt(disk, place); };
    if (std::ranges::any_of(disks, isTaken)) continue;
    common::FillField(place.name, place.bay[0] != '\0' ? Concatenate("Bay ", place.bay)
                                                       : std::string(place.slot));
    take(place);
  }
}

}  // namespace linux_platform
