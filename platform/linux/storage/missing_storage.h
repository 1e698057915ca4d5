// Storage that is configured and not there: lines of fstab, arrays of mdadm.conf, ZFS pools of the
// cache file, and what the collector knows of volume groups.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/storage/devices.h"
#include "platform/linux/storage/redundancy.h"

namespace linux_platform {

struct MissingStorage {
  enum class Kind { Mount, Array, Group, Pool };

  Kind kind = Kind::Mount;
  std::string name;                // of the line its source, of the others their own
  Health health = Health::Normal;  // Normal: it is only worth a note
  std::string what;                // in words, by mount point, array or name
  std::string remedy;
  std::string path, type;  // of what is not mounted: its mount point and file system
};

// The kernel's name of the device that the source of a line of fstab stands for: "UUID=1",
// "/dev/md/data", "/dev/sda1". "" while there is none.
std::string FindDevice(const std::string& source);

// Whether that device or mapping lies on disks of this machine; none when it is not there.
std::optional<bool> IsInside(const std::string& source, Devices& devices);

// The same of what is mounted.
std::optional<bool> IsInside(const Mount& mount, Devices& devices);

// The worst first; tables that could not be read join the failures. What is there costs one system
// call a line. In a container, whose tables are of another machine, nothing is missing.
std::vector<MissingStorage> FindMissing(const Mounts& mounts, const Fstab& fstab, Devices& devices,
                                        Redundancy& redundancy);

}  // namespace linux_platform
