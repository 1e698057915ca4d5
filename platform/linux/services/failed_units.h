// The units of systemd that have failed.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/base/deadline.h"

namespace linux_platform {

// The failed ones whose names match one of the patterns of a shell, "*.mount"; none where systemd
// does not answer. Takes half a second of `budget` at most.
std::vector<std::string> ReadFailedUnits(const std::vector<std::string>& patterns,
                                         TimeBudget& budget);

}  // namespace linux_platform
