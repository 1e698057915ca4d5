// The parts of the storage, a function a kind, and what they share.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/linux/parts/bays.h"
#include "platform/linux/parts/parts.h"
#include "platform/linux/storage/disk_identity.h"

namespace linux_platform {

// Names that findings hold come before others: who looks a name up takes the first.
void TellDiskParts(const StorageView& view, const Bays& bays, const TakePart& take);
void TellVolumeParts(const StorageView& view, const Settings& settings, const TakePart& take);
void TellExternalParts(const StorageView& view, const Settings& settings, const TakePart& take);
void TellArrayParts(const StorageView& view, const TakePart& take);
// Mappings, and volume groups that miss a disk.
void TellMappingParts(const StorageView& view, const TakePart& take);
void TellLunParts(const StorageView& view, const TakePart& take);

VELAPart MakePart(source_status::PartKind kind, source_status::PartState state,
                  std::string_view name);
source_status::PartState ToState(Health health);

// "volume_1"
std::string NameVolume(const InternalVolume& volume);
// "vg0-data" of dm-0, else the kernel's name.
std::string NameDevice(const std::string& device);
// "/dev/mapper/vg0-data" of dm-0, "/dev/md0".
std::string GetNode(const std::string& device);

// What lies on arrays and mappings.
class Users {
 public:
  explicit Users(const StorageView& view);
  // The name of the part that the device serves: a volume, else what is made of it; "" for none.
  std::string Find(const std::string& device) const;

 private:
  std::unordered_map<std::string, std::string> volumes_;  // by the kernel's names of what is below
};

}  // namespace linux_platform
