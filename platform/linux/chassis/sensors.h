// The machine's sensor chips, read through libsensors.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/linux/chassis/fan_verdict.h"

namespace linux_platform {

struct SupplyReading {
  std::string name;
  bool present = true;  // false: an empty bay
  bool failed = false;
  bool predicted = false;  // it works yet, and says that it will fail
  bool gone = false;       // failed, for it is not in its bay any more
};

struct SensorReadings {
  std::vector<std::string> chips;  // "coretemp-isa-0000"
  std::vector<FanReading> fans;
  std::vector<TemperatureReading> temperatures;
  std::vector<SupplyReading> supplies;  // those that speak PMBus
};

enum class SensorsState { Read, Absent, Failed };

// Reads every chip that is the machine's own: fans, and temperatures that have a critical
// limit. Never disks (a reading may keep one awake), nor graphics, wireless and battery
// chips. /etc/sensors3.conf and /etc/sensors.d hold: what they ignore is not there, and
// their labels are used. A value that cannot be read is left out. `reason` says what is
// absent or failed. Serialised within the process.
SensorsState ReadSensors(const std::vector<ExpectedFan>& expected, SensorReadings& readings,
                         std::string& reason);

// The labels of the fans and temperatures, by chip and feature as in FanReading: "CPU Fan" for
// "lm78-i2c-0-2c:fan1". For who tells people of them: a reading needs none. Serialised likewise.
std::map<std::string, std::string> ReadSensorLabels();

}  // namespace linux_platform
