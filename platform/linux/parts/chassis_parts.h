// Fans, temperatures and supplies as parts, for whoever tells of them or of what is wrong with one.
#pragma once

#include <vector>

#include "platform/linux/chassis/chassis.h"
#include "platform/status/parts.h"

namespace linux_platform {

// What the management controller's sensors have for a device.
constexpr const char* kControllerDevice = "ipmi";

// First the fans of the sensor chips, as many as there are readings and in their order; then the
// controller's, the supplies by bay, the temperatures. No two have one name. Reads the labels of
// the chips.
std::vector<VELAPart> ListChassisParts(const Chassis& chassis);

}  // namespace linux_platform
