// Which arrays and file systems a timer ought to read through, and for how long none did.
#pragma once

#include "platform/linux/storage/mounts.h"
#include "platform/linux/storage/seen_storage.h"

namespace linux_platform {

// Counts the days on which the collector looked and saw no check or scrub. btrfs writes down when
// the last one was, and then that counts. What no timer is enabled for is left out.
void RememberScrubs(const Mounts& mounts, const SeenStorage& before, SeenStorage& seen);

}  // namespace linux_platform
