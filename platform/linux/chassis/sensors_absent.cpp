#include "platform/linux/chassis/sensors.h"

namespace linux_platform {

SensorsState ReadSensors(const std::vector<ExpectedFan>&, SensorReadings&, std::string& reason) {
  reason = "this platform was built without libsensors";
  return SensorsState::Absent;
}

std::map<std::string, std::string> ReadSensorLabels() { return {}; }

}  // namespace linux_platform
