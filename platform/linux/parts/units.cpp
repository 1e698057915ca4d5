#include <string>

#include "common/text.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/parts/parts.h"

namespace linux_platform {
namespace {

using common::FillField;
using source_status::PartKind, source_status::PartState;

PartState JudgePart(const EnclosurePart& part) {
  using State = EnclosurePart::State;
  switch (part.state) {
    case State::Ok:
      return PartState::Well;
    case State::Failed:
      return PartState::Failed;
    case State::Absent:
      return PartState::Empty;
    case State::Failing:
      return PartState::Attention;
    case State::Gone:
      return PartState::Missing;
    case State::Unknown:
      break;
  }
  return PartState::Unknown;
}

PartState JudgeUnit(const ExpansionUnit& unit) {
  if (!unit.unread.empty()) return PartState::Unknown;
  const bool failed = unit.fanFailed || unit.firstSupplyFailed || unit.otherSupplyFailed;
  return failed || !unit.failing.empty() ? PartState::Attention : PartState::Well;
}

// `name` as the answer has it: "JBOD-24-1 Power supply 2"; the enclosure's own is the device.
VELAPart MakeUnitsPart(PartKind kind, const EnclosurePart& part, const std::string& unit,
                       const std::string& name) {
  VELAPart made;
  made.kind = kind;
  made.state = JudgePart(part);
  FillField(made.name, Concatenate(unit, " ", name));
  FillField(made.device, part.name);
  FillField(made.parent, unit);
  made.reading = part.reading;
  if (part.reading != 0) FillField(made.unit, "rpm");
  return made;
}

}  // namespace

// By the identifier that SES has for it, which the kernel shows everybody.
EnclosurePlace FindEnclosure(const std::string& id) {
  const std::string folder = Sys("/class/enclosure");
  for (const std::string& name : NamesIn(folder)) {
    std::string shown = Attribute(Concatenate(folder, "/", name, "/id"));
    if (shown.starts_with("0x")) shown.erase(0, 2);
    if (shown != id) continue;
    const auto nodes = NamesIn(Concatenate(folder, "/", name, "/device/scsi_generic"));
    return {name, nodes.empty() ? "" : "/dev/" + nodes.front()};
  }
  return {};
}

void TellUnitParts(const ExpansionUnits& units, const TakePart& take) {
  for (std::size_t rank = 0; rank < units.units.size(); ++rank) {
    const ExpansionUnit& unit = units.units[rank];
    const EnclosurePlace place = FindEnclosure(unit.id);
    const std::string name = unit.Name(rank);
    VELAPart part;
    part.kind = PartKind::Unit;
    part.state = JudgeUnit(unit);
    FillField(part.name, name);
    FillField(part.device, place.device);
    FillField(part.path, place.path);
    FillField(part.model, unit.product);
    FillField(part.serial, unit.id);
    take(part);
    for (std::size_t fan = 0; fan < unit.fans.size(); ++fan)
      take(MakeUnitsPart(PartKind::Fan, unit.fans[fan], name, "Fan " + std::to_string(fan + 1)));
    for (std::size_t supply = 0; supply < unit.supplies.size(); ++supply)
      take(MakeUnitsPart(PartKind::Supply, unit.supplies[supply], name,
                         "Power supply " + std::to_string(supply + 1)));
  }
}

}  // namespace linux_platform
