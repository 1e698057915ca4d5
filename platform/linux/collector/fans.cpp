// The memory of the machine's fans: one that has turned since boot and stands is broken,
// and one that never turned is a header without a fan.
#include <ctime>

#include "common/json_reader.h"
#include "platform/linux/chassis/fan_memory.h"
#include "platform/linux/chassis/sensors.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/collector/snapshot_folder.h"

namespace linux_platform {

Json::Value CollectFans() {
  SensorReadings readings;
  std::string reason;
  const SensorsState state = ReadSensors({}, readings, reason);
  if (state == SensorsState::Failed) return Unread(reason);
  if (state == SensorsState::Absent || readings.fans.empty()) return {};
  const Json::Value last = LastSnapshot("fans");
  const Json::Value* before = common::FindMember(last, "fans");
  Json::Value members(Json::objectValue);
  members["fans"] = RememberFans(before != nullptr ? *before : Json::Value(), readings.fans,
                                 static_cast<long long>(std::time(nullptr)));
  return members;
}

}  // namespace linux_platform
