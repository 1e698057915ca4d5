// What the management controller says of its sensors: the collector's snapshot "ipmi".
#pragma once

#include <string>
#include <vector>

#include <json/value.h>

namespace linux_platform {

struct ControllerSensor {
  // InputLost, Absent (an empty bay: no fault) and Failing, which works and predicts its end, are
  // of supplies, Critical of temperatures.
  enum class State { Ok, Failed, InputLost, Absent, Critical, Failing, Unknown };

  std::string name;
  State state = State::Unknown;
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
