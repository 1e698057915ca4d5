#include "platform/linux/sensors.h"

namespace vela::linuxplatform {

SensorsState ReadSensors(const std::vector<ExpectedFan>&, SensorReadings&, std::string& reason) {
  reason = "this platform was built without libsensors";
  return SensorsState::Absent;
}

}  // namespace vela::linuxplatform
