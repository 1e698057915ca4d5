// What udev's rules say about a disk.
#pragma once

#include <optional>
#include <string>

namespace linux_platform {

struct UdevMarks {
  bool cardReader = false;  // a flash-drive property, or VELA_SDCARD=1
  bool esata = false;       // VELA_BAY=esata or UDISKS_SYSTEM=0
};

// The marks of the disk whose folder in /sys is `path`; none when udev knows no such disk. libudev
// takes more than a hundred system calls for that. So its answer is kept in the process for as long
// as udev's own record of the disk stays the same, which takes one call to see. Any thread may
// call.
std::optional<UdevMarks> ReadUdevMarks(const std::string& path);

}  // namespace linux_platform
