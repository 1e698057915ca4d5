// What is wrong with the chassis: fans, supplies, temperature; by live sensor chips, and by
// what the collector last heard from the management controller.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/base/trouble.h"
#include "platform/linux/chassis/ipmi_snapshot.h"
#include "platform/linux/chassis/sensors.h"

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

  // What was judged.
  SensorReadings readings;                // without the supplies
  IpmiSnapshot controller;                // without the supplies
  std::vector<SupplyReading> supplyBays;  // all that were looked at, by bay
};

Chassis ReadChassis(const Settings& settings);

}  // namespace linux_platform
