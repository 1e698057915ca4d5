#include <algorithm>
#include <string>

#include "common/text.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/evidence/cause.h"
#include "platform/linux/parts/parts.h"

namespace linux_platform {
namespace {

struct Told {
  const std::string &unit, &show;
  const TakeEvidence& take;
};

void TellFailed(const std::vector<EnclosurePart>& parts, const char* key, const Told& told) {
  for (const EnclosurePart& part : parts) {
    if (!part.HasFailed()) continue;
    const bool isGone = part.state == EnclosurePart::State::Gone;
    VELAEvidence record = MakeEvidence(isGone ? "unit_part_gone" : key, kExpansionUnits, told.unit);
    common::FillField(record.words, part.name);
    SetShow(record, told.show);
    told.take(record);
  }
}

// The enclosure itself, else what was seen of it.
std::string ChooseCommand(const std::string& id) {
  const std::string path = FindEnclosure(id).path;
  return path.empty()
             ? Concatenate("cat ", kSnapshotFolder, "/", EnclosureSnapshot::kSource, ".json")
             : "sg_ses --join " + path;
}

}  // namespace

// Fans before supplies, as the answer has them; of units beyond the mask nobody asks for fans.
void TellUnitEvidence(const ExpansionUnits& units, const TakeEvidence& take) {
  const auto tell = [&](bool fans) {
    for (std::size_t rank = 0; rank < units.units.size(); ++rank) {
      const ExpansionUnit& unit = units.units[rank];
      const bool failed = fans ? unit.fanFailed && rank < kWatchedUnits
                               : unit.firstSupplyFailed || unit.otherSupplyFailed;
      if (!failed) continue;
      const std::string name = unit.Name(rank), show = ChooseCommand(unit.id);
      TellFailed(fans ? unit.fans : unit.supplies, fans ? "unit_fan_failed" : "unit_supply_failed",
                 {name, show, take});
    }
  };
  tell(true);
  tell(false);
}

}  // namespace linux_platform
