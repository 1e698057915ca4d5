// What a disk is part of, and whether that can do without it.
#pragma once

#include <vector>

#include "platform/linux/storage/seen_disks.h"
#include "platform/linux/storage/storage_view.h"

namespace linux_platform {

// What the disk `device` serves now, by arrays, udev's records and mounts.
std::vector<SeenDisk::Use> ListUses(const StorageView& view, const std::string& device);

enum class Need {
  Filled,   // it is whole
  Missed,   // it runs short of a disk in that place, or cannot run
  Unknown,  // it is not there, or does not tell
};
struct Needed {
  Need need = Need::Unknown;
  std::string by;  // the name of the part that needs it, where it is missed: "md0", "volume_1"
};
Needed FindNeed(const StorageView& view, const SeenDisk& disk, const SeenDisk::Use& use);

}  // namespace linux_platform
