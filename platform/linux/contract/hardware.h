// What is wrong with the chassis: fans, supplies, temperature.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace linux_platform {

constexpr std::size_t kWatchedSupplies = 24;  // as many bits as a supply mask has

struct Chassis {
  bool fanFailed = false;
  bool processorFanFailed = false;
  int supplies = 0;                  // that are there
  std::uint32_t failedSupplies = 0;  // bit n: supply n + 1
  std::uint32_t failedUnitFans = 0;  // bit n: the expansion unit at slot n
  std::optional<bool> tooHot;        // none: nothing to judge it by
};

// For tests: the calling thread looks afresh.
void ForgetHardware();

}  // namespace linux_platform
