// What is wrong with the chassis: fans, supplies, temperature; by live sensor chips, and by
// what the collector last heard from the management controller.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/base/trouble.h"

namespace linux_platform {

class Settings;

constexpr std::size_t kWatchedSupplies = 24;  // as many bits as a supply mask has

struct Chassis {
  bool absent = false;            // no sensor chips, management controller or second mains adapter
  std::vector<Trouble> troubles;  // with what could not be read, or nobody watches
  std::vector<Trouble> remarks;   // supplies that are gone or predict their failure
  bool fanFailed = false;
  bool processorFanFailed = false;
  int supplies = 0;                  // that are there
  std::uint32_t failedSupplies = 0;  // bit n: supply n + 1
  std::optional<bool> tooHot;        // none: nothing to judge it by
};

Chassis ReadChassis(const Settings& settings);

}  // namespace linux_platform
