// A volume group as LVM writes it down in /etc/lvm/backup.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/storage/block.h"

namespace linux_platform {

struct VolumeGroup {
  struct PhysicalVolume {
    std::string id;      // "aBcDeF-0123-..."
    std::string device;  // where it was, "/dev/sdb1"
  };
  std::map<std::string, PhysicalVolume> disks;            // by the name in the text: "pv0"
  std::map<std::string, std::vector<std::string>> users;  // of each disk: logical volumes
};

VolumeGroup ParseVolumeGroup(std::string_view text);

struct LostDisks {
  Health health = Health::Abnormal;  // Danger where a volume has no copy of what is lost
  std::string why;                   // in words
};
// `there`: the ids of all physical volumes of this machine. Nothing is lost of a group of which
// nothing is there: it is another machine's by now, or its stick lies in a drawer.
std::optional<LostDisks> FindLost(const VolumeGroup& group, const std::set<std::string>& there);

}  // namespace linux_platform
