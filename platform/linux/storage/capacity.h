// What a mounted file system says of its room.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace linux_platform {

struct Capacity {
  std::uint64_t size = 0, free = 0, available = 0;  // bytes; available: without the reserve
  std::uint64_t files = 0, freeFiles = 0;           // both 0 where there is no limit
};

// Of the file system mounted at `path`, through O_PATH, which triggers no automount and
// wakes no disk. Fails, errno telling, also when the mount there is not of `device` any
// more; a device without a major number (btrfs, ZFS) is not compared.
bool ReadCapacity(const std::string& path, dev_t device, Capacity& capacity);

}  // namespace linux_platform
