#include <algorithm>
#include <string>

#include "common/text.h"
#include "platform/linux/evidence/cause.h"
#include "platform/linux/parts/chassis_parts.h"

namespace linux_platform {
namespace {

using source_status::PartKind, source_status::PartState;

const char* ChooseFanKey(const VELAPart& fan) {
  const bool measured = fan.unit[0] != '\0';
  if (measured && fan.reading <= 0) return "fan_stopped";
  return measured && fan.reading < fan.mark ? "fan_slow" : "fan_failed";
}

const char* ChooseSensorKey(const VELAPart& sensor) {
  if (sensor.unit[0] == '\0') return "temperature_alarm";
  const bool aboveMark = sensor.mark > 0 && sensor.reading >= sensor.mark;
  return aboveMark ? "temperature_high" : "temperature_critical";
}

const char* ChooseSupplyKey(const VELAPart& supply) {
  if (supply.state == PartState::Missing) return "supply_gone";
  return supply.state == PartState::Attention ? "supply_failing" : "supply_failed";
}

const char* ChooseKey(const VELAPart& part) {
  if (part.kind == PartKind::Fan) return ChooseFanKey(part);
  return part.kind == PartKind::Supply ? ChooseSupplyKey(part) : ChooseSensorKey(part);
}

// What told it.
std::string ChooseCommand(const VELAPart& part, const Chassis& chassis) {
  if (part.kind == PartKind::Supply) {
    if (!chassis.controller.supplies.empty()) return "ipmi-sensors --sensor-types=Power_Supply";
    const bool isChip = std::ranges::count(chassis.readings.chips, part.device) > 0;
    return isChip ? "sensors" : "grep . /sys/class/power_supply/*/online";
  }
  if (std::string_view(part.device) != kControllerDevice) return "sensors";
  return part.kind == PartKind::Fan ? "ipmi-sensors --sensor-types=Fan"
                                    : "ipmi-sensors --sensor-types=Temperature";
}

VELAEvidence Describe(const VELAPart& part, const Chassis& chassis) {
  VELAEvidence record = MakeEvidence(ChooseKey(part), kSystemStatus, part.name);
  record.figure = part.reading;
  record.mark = part.mark;
  SetShow(record, ChooseCommand(part, chassis));
  return record;
}

bool IsBad(const VELAPart& part) {
  return part.state == PartState::Failed || part.state == PartState::Missing ||
         part.state == PartState::Attention;
}

// In the order in which the answer prefers them.
int RankKind(const VELAPart& part) {
  if (part.kind == PartKind::Fan) return IsProcessorFan(part.name) ? 1 : 0;
  return part.kind == PartKind::Supply ? 2 : 3;
}

}  // namespace

void TellChassisEvidence(const Chassis& chassis, const TakeEvidence& take) {
  const bool isBad = chassis.fanFailed || chassis.processorFanFailed ||
                     chassis.failedSupplies != 0 || chassis.tooHot.value_or(false);
  if (!isBad) return;
  const std::vector<VELAPart> parts = ListChassisParts(chassis);
  const std::vector<FanReading>& fans = chassis.readings.fans;
  for (int rank = 0; rank <= 3; ++rank)
    for (std::size_t i = 0; i < parts.size(); ++i) {
      if (RankKind(parts[i]) != rank || !IsBad(parts[i])) continue;
      VELAEvidence record = Describe(parts[i], chassis);
      if (i < fans.size()) record.since = fans[i].since;
      take(record);
    }
}

}  // namespace linux_platform
