// One round: every part is asked in a process of its own, all at once, and its snapshot
// replaced.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/collector/parts.h"

namespace linux_platform {

// What a part's own process prints: null, or the part's members; "error" when an earlier
// one is still at it.
std::string PrintedBy(const Part& part);

// Says on standard error what could not be read; unless a person looks on, only what was
// not said the last time. False when a snapshot could not be written.
bool RunRound(const std::vector<const Part*>& parts);

}  // namespace linux_platform
