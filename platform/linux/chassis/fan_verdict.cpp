#include "platform/linux/chassis/fan_verdict.h"

#include <strings.h>

#include <algorithm>

namespace linux_platform {
namespace {

constexpr long long kBetweenReadings = 5;  // seconds
constexpr double kDriven = 77;             // of 255: 30 per cent, where every fan turns

// Unprogrammed registers read as 0 or as more than any fan's minimum.
bool IsSaneMinimum(double rpm) { return rpm >= 60 && rpm <= 8000; }
bool IsSaneCritical(double celsius) { return celsius >= 50 && celsius <= 150; }

}  // namespace

bool HasFailed(const FanReading& fan, bool expected, const FanHistory& history, long long now) {
  if (!fan.input) return false;
  const bool stands = *fan.input <= 0;
  const bool tooSlow = IsSaneMinimum(fan.minimum) && *fan.input < fan.minimum;
  if (expected) return stands || fan.fault || tooSlow;
  if (fan.known) return fan.fault || fan.alarm;
  if (fan.minimumIsSet && tooSlow && fan.alarm) return true;
  const bool stoodBefore = history.stopped != 0 && now - history.stopped >= kBetweenReadings;
  // What nothing drives has full power. Firmware may stop a fan without a word.
  const bool driven = fan.pwm ? *fan.pwm >= kDriven : fan.onBoard;
  return history.turned && stands && stoodBefore && (fan.alarm || driven);
}

bool IsProcessorFan(std::string_view label) {
  for (; label.size() >= 3; label.remove_prefix(1))
    if (strncasecmp(label.data(), "cpu", 3) == 0) return true;
  return false;
}

bool TemperatureReading::HasMark() const { return critical && IsSaneCritical(*critical); }

std::optional<bool> IsTooHot(const TemperatureReading& temperature) {
  if (temperature.fault) return std::nullopt;
  const bool sane = temperature.input && temperature.HasMark();
  if (!sane && !temperature.alarm) return std::nullopt;
  return temperature.alarm.value_or(false) || (sane && *temperature.input >= *temperature.critical);
}

std::vector<ExpectedFan> ParseExpectedFans(const std::vector<std::string_view>& words) {
  std::vector<ExpectedFan> fans;
  for (const std::string_view word : words) {
    const std::size_t equals = std::min(word.find('='), word.size());
    const std::size_t colon = word.substr(0, equals).rfind(':');
    if (colon == std::string_view::npos) continue;
    fans.push_back({word.substr(0, colon), word.substr(colon + 1, equals - colon - 1),
                    word.substr(std::min(equals + 1, word.size()))});
  }
  return fans;
}

const ExpectedFan* FindExpected(const std::vector<ExpectedFan>& fans, std::string_view key) {
  const std::size_t colon = key.rfind(':');
  if (colon == std::string_view::npos) return nullptr;
  const std::string_view chip = key.substr(0, colon), feature = key.substr(colon + 1);
  const auto found = std::ranges::find_if(fans, [&](const ExpectedFan& fan) {
    return fan.feature == feature &&
           (fan.chip == chip || fan.chip == chip.substr(0, chip.find('-')));
  });
  return found == fans.end() ? nullptr : &*found;
}

}  // namespace linux_platform
