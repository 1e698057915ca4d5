// What is set up to read arrays and file systems through each month, or more often.
#pragma once

#include <string>

namespace linux_platform {

// mdadm's timer, or Debian's cron job.
bool AreArraysToBeChecked();
// The btrfs at this mount point: a timer of its own, or the timer of btrfsmaintenance.
bool IsToBeScrubbed(const std::string& target);

}  // namespace linux_platform
