// What the management controller says of its sensors: the collector's snapshot "ipmi".
#pragma once

#include <string>
#include <vector>

#include <json/value.h>

namespace linux_platform {

// The program that asks it.
constexpr const char* kIpmiSensors = "/usr/sbin/ipmi-sensors";

struct ControllerSensor {
  // InputLost, Absent (an empty bay: no fault), Gone (a bay that had one) and Failing, which works
  // and predicts its end, are of supplies, Critical of temperatures.
  enum class State { Ok, Failed, InputLost, Absent, Critical, Failing, Gone, Unknown };

  std::string name;
  State state = State::Unknown;
  int reading = 0;  // degrees Celsius or turns a minute; 0: not told
};

struct IpmiSnapshot {
  static constexpr const char* kSource = "ipmi";

  std::vector<ControllerSensor> supplies;  // by bay: the first is supply 1
  std::vector<ControllerSensor> fans, temperatures;

  Json::Value ToJson() const;
  // Lists that are missing or of another type are empty; a state of another name is Unknown.
  static IpmiSnapshot FromJson(const Json::Value& document);
};

}  // namespace linux_platform
