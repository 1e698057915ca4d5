// The disks that arrays, groups, pools and volumes of this machine miss, and who they were.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/storage/seen_disks.h"
#include "platform/linux/storage/storage_view.h"

namespace linux_platform {

struct MissingDisk {
  // Of the part that it is told as: "Disk 3" where the disk is still in the machine and its array
  // does without it; else the kernel's name that it had, or its serial number where two had that.
  std::string name;
  std::string parent;     // the part that misses it: "md0", "volume_1"
  bool isThere = false;   // as above
  DiskIdentity identity;  // texts are empty where nobody saw it in time
  std::int64_t gone = 0;  // since when, in seconds since 1970; 0: not known
};

// Nothing where all is whole, which costs no look at the memory. No device is opened.
std::vector<MissingDisk> FindMissingDisks(const StorageView& view);

// The memory after a look at the machine at `now`: all of its disks, and those that are gone for as
// long as what they served is not whole without them, a year at most.
SeenDisks RememberDisks(const StorageView& view, const SeenDisks& before, std::int64_t now);

}  // namespace linux_platform
