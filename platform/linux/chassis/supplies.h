// The power supplies, by bay: which are there and which have failed.
#pragma once

#include <vector>

#include <json/value.h>

#include "platform/linux/chassis/sensors.h"

namespace linux_platform {

// Those of the management controller's snapshot, in its order, which is the bays'.
std::vector<SupplyReading> SuppliesOf(const Json::Value& ipmi);

// The mains adapters of /sys/class/power_supply, by name. Fewer than two are a laptop's
// plug, which may be out, and are left out.
std::vector<SupplyReading> MainsAdapters();

}  // namespace linux_platform
