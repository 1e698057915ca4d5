// Block devices as /sys shows them: from a device number down to the disks beneath it.
#pragma once

#include <sys/types.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace linux_platform {

// How an internal storage object is, worst last.
enum class Health { Normal, Abnormal, Danger };

inline Health Worse(Health a, Health b) { return std::max(a, b); }

// What lies under a file system, swap area or array.
struct Stack {
  std::vector<std::string> layers;  // every device on the way, by kernel name: dm-0, md0
  std::vector<std::string> disks;   // the whole disks at the bottom: sda, nvme0n1
  // The uppermost device is not there any more, or empty; or what a mapping needs beneath is gone.
  // What has copies (arrays, mirrors, RAID volumes, paths) tells by itself what it lost.
  bool gone = false;
};

// The stack under the device number. `gone` only where /sys lists devices at all.
Stack ReadStack(dev_t device);
// The stack under a device node or kernel name: /dev/mapper/a, /dev/sda1, sda1. A node
// that does not exist below /dev is looked for by its last component.
Stack ReadStack(std::string_view node);

// The kernel name of the whole disk of a device, whose folder in /sys is given. A partition's
// folder lies in its disk's.
std::string GetWholeDisk(const std::string& folder);

// The whole disk that a device is or lies on, by the kernel's names; itself where /sys lacks it.
std::string FindDiskOf(const std::string& device);
// The first device that has been made of the device or of one of its partitions; "" for none.
std::string FindHolder(const std::string& device);

// The whole disks and arrays that /sys/block lists, sorted.
std::vector<std::string> ListBlockDevices();

// Of a kind that disks have (sd, nvme, vd, xvd, mmcblk), not a partition and not the
// boot or protected areas of a memory card.
bool IsDiskName(std::string_view name);

}  // namespace linux_platform
