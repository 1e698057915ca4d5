// The power supplies, by bay: which are there and which have failed.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/chassis/ipmi_snapshot.h"
#include "platform/linux/chassis/sensors.h"

namespace linux_platform {

// Those of the management controller's snapshot, in its order, which is the bays'. A failure that
// it predicts is critical to it, as one that has happened.
std::vector<SupplyReading> ListSupplies(const IpmiSnapshot& ipmi);

// Those of /sys/class/power_supply, by name.
std::vector<std::string> ListMainsAdapters();
// How these are. Fewer than two are a laptop's plug, which may be out, and are left out, unless
// there once were two.
std::vector<SupplyReading> ReadMainsAdapters();

}  // namespace linux_platform
