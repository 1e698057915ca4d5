// Whether a fan, or the temperature, has failed: pure functions over what the sensors say.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace linux_platform {

struct FanReading {
  std::string key;              // chip and feature as libsensors names them: "lm78-i2c-0-2c:fan1"
  std::string label;            // the administrator's or the chip's own: "CPU Fan"
  std::optional<double> input;  // rpm; none when it could not be read
  // Read only where they can matter: of a fan that stands, is expected, or is known.
  double minimum = 0;         // rpm
  std::optional<double> pwm;  // 0 to 255; none: its chip does not drive it
  bool alarm = false;
  bool fault = false;
  bool known = false;         // its chip knows which fans are there
  bool minimumIsSet = false;  // by the administrator, and not by whatever the board began with
  bool onBoard = false;       // a chip of the board counts its turns, no firmware
  bool expected = false;      // the administrator says that it must turn
  bool failed = false;        // the verdict
  long long since = 0;        // of one that failed: when it stopped, in seconds; 0: not known

  // Whether its minimum is one that somebody set on purpose.
  bool HasMark() const { return minimum > 0 && (expected || minimumIsSet); }
};

// What this boot has taught about a fan.
struct FanHistory {
  bool turned = false;
  long long stopped = 0;  // when it was first read as 0 since it turned, in seconds; 0: it turns
};

// A fan that the administrator says must turn.
struct ExpectedFan {
  std::string_view chip, feature, label;  // no label: the chip's own
};

// The words of the setting "fan.expect": "chip:feature" or "chip:feature=label"; others do
// not count. The chip is its whole name or what stands before its first "-".
std::vector<ExpectedFan> ParseExpectedFans(const std::vector<std::string_view>& words);
// The entry for the fan with this key; null when nobody expects it.
const ExpectedFan* FindExpected(const std::vector<ExpectedFan>& fans, std::string_view key);

// Whether the fan has failed, at the time `now` in seconds. A header without a fan reads
// as 0 or as an alarm, so only evidence that a fan is there makes it fail.
bool HasFailed(const FanReading& fan, bool expected, const FanHistory& history, long long now);

// Whether the label is that of the processor's fan.
bool IsProcessorFan(std::string_view label);

struct TemperatureReading {
  std::optional<double> input, critical;  // degrees Celsius
  std::optional<bool> alarm;  // crit_alarm or emergency_alarm; none: the chip has neither
  bool fault = false;
  std::size_t chip = 0;      // its rank among the chips
  std::string feature = {};  // "temp1"

  // Whether its limit is one; else it is what a register held by chance.
  bool HasMark() const;
};

// Whether the sensor is too hot; none when it has nothing sound to be judged by. Maxima
// and plain alarms do not count: a thermistor that is not connected has those.
std::optional<bool> IsTooHot(const TemperatureReading& temperature);

}  // namespace linux_platform
