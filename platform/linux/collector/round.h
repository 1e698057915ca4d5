// One round: every part is asked in a process of its own, all at once, and its snapshot
// replaced.
#pragma once

#include <vector>

#include "platform/linux/collector/parts.h"

namespace linux_platform {

// Says on standard error what could not be read; unless a person reads along, only what was
// not said the last time. False when a snapshot could not be written.
bool RunRound(const std::vector<const Part*>& parts);

}  // namespace linux_platform
