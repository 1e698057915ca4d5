// What ipmi-sensors prints of a management controller's supplies, fans and temperatures.
#pragma once

#include <string_view>

#include "platform/linux/chassis/ipmi_snapshot.h"

namespace linux_platform {

// The sensors in the order of `text`: lines of record, name,
// type, state, reading, unit and events, comma-separated, without a header. A supply's
// place is its bay: one that is not plugged in stays in the list. Lines that are no sensor
// of these types, or a supply's measurement, are left out.
IpmiSnapshot ParseIpmiSensors(std::string_view text);

}  // namespace linux_platform
