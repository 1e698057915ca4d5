// Which mounts are the machine's internal volumes, and how each is called and judged.
// Pure functions over the mount table.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/storage/mounts.h"

namespace linux_platform {

class Settings;

// Whether the mount by itself may be a volume: a file system kept on disks, not made
// read-only by choice, not a boot partition, and not in a place where programs keep
// their own mounts. `skipRoot` leaves "/" out.
bool MayBeVolume(const Mount& mount, bool skipRoot);

struct VolumeChoice {
  std::vector<const Mount*> reachable;  // by path
  // Whole file systems that can only be reached past a mount that may hang: they are not
  // looked at.
  std::vector<const Mount*> hidden;
};

// One mount per file system: preferably of its root, else the shortest path. `isInternal`
// says whether a mount's device is of this machine; it is called only for mounts that are
// otherwise fit.
VolumeChoice ChooseVolumes(const Mounts& mounts, bool skipRoot,
                           const std::function<bool(const Mount&)>& isInternal);

// The number of each path's volume: the setting "volume.id.<path>"; else N for "/volumeN";
// else the lowest free ones, first in fstab's order, then by the paths' bytes.
std::vector<int> NumberVolumes(const std::vector<std::string>& paths, const FstabTargets& fstab,
                               const Settings& settings);

// The free share below which the volume warns: "volume.warn.<path>", else
// "volume_warning_percent", else 0.05. A number from 1 up is a percentage.
float GetWarningLevel(const Settings& settings, std::string_view path);

}  // namespace linux_platform
