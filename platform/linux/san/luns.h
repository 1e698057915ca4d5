// What the LUNs are worth: each judged by its storage and by the volume that it lies on.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "platform/linux/san/host_volumes.h"
#include "platform/linux/san/target.h"

namespace linux_platform {

enum class LunStatus { Unhealthy, Unavailable, LowSpace, Normal };
// As the SAN tool's document calls them.
inline constexpr std::array kLunStatusNames = {"Unhealthy", "unavailabling", "low_space", "normal"};

struct JudgedLun {
  Lun lun;
  LunStatus status = LunStatus::Normal;
  std::string location;  // the volume's mount point; "" for block devices
  bool isSeen = true;    // false: on a volume that may hang, so nobody looked at its file
};

// The LUNs that the kernel has, then those that only the saved configuration has while the target
// runs. Complete as far as can be read; `trouble` says in words what could not.
std::vector<JudgedLun> ReadLuns(HostVolumes& volumes, std::string& trouble);

}  // namespace linux_platform
