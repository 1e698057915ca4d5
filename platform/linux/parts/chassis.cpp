#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "common/text.h"
#include "platform/linux/base/root.h"
#include "platform/linux/parts/chassis_parts.h"
#include "platform/linux/parts/parts.h"

namespace linux_platform {
namespace {

using common::FillField;
using source_status::PartKind, source_status::PartState;
using Labels = std::map<std::string, std::string>;

VELAPart MakePart(PartKind kind, PartState state, std::string_view name, std::string_view device) {
  VELAPart part;
  part.kind = kind;
  part.state = state;
  FillField(part.name, name);
  FillField(part.device, device);
  return part;
}

void SetReading(VELAPart& part, double reading, double mark, std::string_view unit) {
  part.reading = std::lround(reading);
  part.mark = std::lround(mark);
  FillField(part.unit, unit);
}

// "nct6779" of "nct6779-isa-0290:fan2".
std::string_view DriverOf(std::string_view key) { return key.substr(0, key.find('-')); }

std::string LabelOf(const std::string& key, const Labels& labels) {
  const auto found = labels.find(key);
  return found != labels.end() ? found->second : key.substr(key.rfind(':') + 1);
}

// A header without a fan, or one that rests, stands and has not failed.
PartState JudgeFan(const FanReading& fan) {
  if (fan.failed) return PartState::Failed;
  if (!fan.input) return PartState::Unknown;
  return *fan.input > 0 || fan.known ? PartState::Well : PartState::Empty;
}

VELAPart MakeFan(const FanReading& fan, const Labels& labels) {
  const std::string name = fan.label.empty() ? LabelOf(fan.key, labels) : fan.label;
  VELAPart part = MakePart(PartKind::Fan, JudgeFan(fan), name, DriverOf(fan.key));
  if (fan.input) SetReading(part, *fan.input, fan.HasMark() ? fan.minimum : 0, "rpm");
  return part;
}

VELAPart MakeSensor(const TemperatureReading& sensor, const SensorReadings& readings,
                    const Labels& labels) {
  const std::string key = readings.chips.at(sensor.chip) + ':' + sensor.feature;
  const std::optional<bool> hot = IsTooHot(sensor);
  const PartState state = !hot ? PartState::Unknown : *hot ? PartState::Attention : PartState::Well;
  VELAPart part = MakePart(PartKind::Sensor, state, LabelOf(key, labels), DriverOf(key));
  if (sensor.input) SetReading(part, *sensor.input, sensor.HasMark() ? *sensor.critical : 0, "C");
  return part;
}

VELAPart MakeControllers(PartKind kind, const ControllerSensor& sensor, const char* unit) {
  using State = ControllerSensor::State;
  const PartState state = sensor.state == State::Failed     ? PartState::Failed
                          : sensor.state == State::Critical ? PartState::Attention
                          : sensor.state == State::Ok       ? PartState::Well
                                                            : PartState::Unknown;
  const std::string name = sensor.name.empty() ? kControllerDevice : sensor.name;
  VELAPart part = MakePart(kind, state, name, kControllerDevice);
  if (sensor.reading != 0) SetReading(part, sensor.reading, 0, unit);
  return part;
}

PartState JudgeSupply(const SupplyReading& supply) {
  if (supply.gone) return PartState::Missing;
  if (supply.predicted) return PartState::Attention;
  if (supply.failed) return PartState::Failed;
  return supply.present ? PartState::Well : PartState::Empty;
}

// By bay, as the answer counts them.
VELAPart MakeSupply(std::size_t bay, const Chassis& chassis) {
  const SupplyReading& supply = chassis.supplyBays[bay];
  const auto& told = chassis.controller.supplies;
  const bool unknown = bay < told.size() && told[bay].state == ControllerSensor::State::Unknown;
  return MakePart(PartKind::Supply, unknown ? PartState::Unknown : JudgeSupply(supply),
                  "Power supply " + std::to_string(bay + 1), supply.name);
}

// "Core 0 (coretemp)", "Core 0 (coretemp 2)" after "Core 0": who asks for a part by its name must
// get the right one.
void MakeNamesDistinct(std::vector<VELAPart>& parts) {
  std::set<std::string> names;
  for (VELAPart& part : parts) {
    const std::string name = part.name;
    std::string distinct = name;
    for (int turn = 1; !names.insert(distinct).second; ++turn) {
      distinct = Concatenate(name, " (", part.device, turn == 1 ? "" : " " + std::to_string(turn));
      distinct += ')';
    }
    FillField(part.name, distinct);
  }
}

}  // namespace

std::vector<VELAPart> ListChassisParts(const Chassis& chassis) {
  const SensorReadings& readings = chassis.readings;
  const bool hasChips = !readings.chips.empty();
  const Labels labels = hasChips ? ReadSensorLabels() : Labels();
  std::vector<VELAPart> parts;
  for (const FanReading& fan : readings.fans) parts.push_back(MakeFan(fan, labels));
  for (const ControllerSensor& fan : chassis.controller.fans)
    parts.push_back(MakeControllers(PartKind::Fan, fan, "rpm"));
  for (std::size_t bay = 0; bay < chassis.supplyBays.size(); ++bay)
    parts.push_back(MakeSupply(bay, chassis));
  for (const TemperatureReading& sensor : readings.temperatures)
    parts.push_back(MakeSensor(sensor, readings, labels));
  for (const ControllerSensor& sensor : chassis.controller.temperatures)
    parts.push_back(MakeControllers(PartKind::Sensor, sensor, "C"));
  MakeNamesDistinct(parts);
  return parts;
}

void TellChassisParts(const Chassis& chassis, const TakePart& take) {
  for (const VELAPart& part : ListChassisParts(chassis)) take(part);
}

}  // namespace linux_platform
