#include "platform/linux/chassis/ipmi_snapshot.h"

#include <algorithm>
#include <array>

#include "common/json_reader.h"
#include "platform/linux/base/snapshot.h"

namespace linux_platform {
namespace {

using State = ControllerSensor::State;

constexpr std::array<std::string_view, 8> kStates = {
    "ok", "failed", "input_lost", "absent", "critical", "failing", "gone", "unknown"};
constexpr const char *kSupplies = "supplies", *kFans = "fans", *kTemperatures = "temperatures";
constexpr const char *kName = "name", *kState = "state", *kReading = "reading";

State StateNamed(std::string_view name) {
  const auto found = std::ranges::find(kStates, name);
  return found == kStates.end() ? State::Unknown : static_cast<State>(found - kStates.begin());
}

Json::Value ToJson(const std::vector<ControllerSensor>& sensors) {
  Json::Value list(Json::arrayValue);
  for (const ControllerSensor& sensor : sensors) {
    Json::Value& entry = list.append(Json::Value(Json::objectValue));
    entry[kName] = sensor.name;
    entry[kState] = std::string(kStates[static_cast<std::size_t>(sensor.state)]);
    if (sensor.reading != 0) entry[kReading] = sensor.reading;
  }
  return list;
}

std::vector<ControllerSensor> SensorsFromJson(const Json::Value& list) {
  std::vector<ControllerSensor> sensors;
  for (const Json::Value& entry : list)
    sensors.push_back({common::TextMember(entry, kName),
                       StateNamed(common::TextMember(entry, kState)),
                       static_cast<int>(NumberMember(entry, kReading))});
  return sensors;
}

}  // namespace

Json::Value IpmiSnapshot::ToJson() const {
  Json::Value members(Json::objectValue);
  members[kSupplies] = linux_platform::ToJson(supplies);
  members[kFans] = linux_platform::ToJson(fans);
  members[kTemperatures] = linux_platform::ToJson(temperatures);
  return members;
}

IpmiSnapshot IpmiSnapshot::FromJson(const Json::Value& document) {
  return {SensorsFromJson(ListMember(document, kSupplies)),
          SensorsFromJson(ListMember(document, kFans)),
          SensorsFromJson(ListMember(document, kTemperatures))};
}

}  // namespace linux_platform
