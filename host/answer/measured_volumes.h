// The volumes that checks measured, with what they held the free bytes against.
#pragma once

#include <string>
#include <vector>

#include "host/answer/explanation.h"

namespace host {

struct MeasuredVolume {
  std::string name;            // as its part has it: "volume_1", "usbshare1"
  double size, free, minimum;  // bytes; with less free than the minimum it is low
};

// Volumes of this machine, then external ones, in the order of their checks; none where a check
// could not be made.
std::vector<MeasuredVolume> ListMeasuredVolumes(const Explanation& explanation);

}  // namespace host
