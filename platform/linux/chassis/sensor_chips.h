// Which sensor chips are the machine's own, and which of them know their fans.
#pragma once

#include <string_view>

namespace linux_platform {

// False for disks, graphics, wireless, batteries and one-wire buses: reading them costs
// seconds, wakes a device, or says nothing about the chassis. `prefix` is libsensors'
// name of the driver.
bool IsChassisChip(std::string_view prefix);

// Whether a fan of this chip is there because the chip says so, not because it has a
// register for one: PMBus devices and fans on a GPIO line.
bool KnowsItsFans(std::string_view prefix);

// Whether the chip sits in a power supply.
bool IsSupply(std::string_view prefix);

}  // namespace linux_platform
