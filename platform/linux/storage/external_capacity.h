// How full the external volumes are.
#pragma once

#include <vector>

#include "platform/linux/storage/external_choice.h"

namespace linux_platform {

// Sets the capacity of each, or its trouble. A program's file system is asked by the collector
// alone, which may wait for it.
void MeasureExternal(std::vector<ExternalVolume>& volumes);

}  // namespace linux_platform
