#include "platform/linux/storage/disk_uses.h"

#include <algorithm>

#include "platform/linux/base/sysfs.h"
#include "platform/linux/storage/udev_record.h"

namespace linux_platform {
namespace {

using Use = SeenDisk::Use;

constexpr const char *kArray = "array", *kGroup = "group", *kBtrfs = "btrfs", *kPool = "pool",
                     *kVolume = "volume";

// The array's own mark, which stays when the kernel gives it another name; else that name.
std::string ReadArrayMark(const MdArray& array) {
  std::string uuid = ToUuid(ReadUdevPropertyOf(array.name, "MD_UUID"));
  for (const MdMember& member : array.members)
    if (uuid.empty()) uuid = ToUuid(ReadUdevPropertyOf(member.device, "ID_FS_UUID"));
  return uuid.empty() ? array.name : uuid;
}

void AddArrays(const StorageView& view, const std::string& device, std::vector<Use>& uses) {
  for (const MdArray& array : view.redundancy.arrays)
    for (const MdMember& member : array.members)
      if (member.present && FindDiskOf(member.device) == device)
        uses.push_back({kArray, ReadArrayMark(array), ToNumber(member.slot) ? member.slot : ""});
}

// What udev found on the disk or a partition of it.
void AddContent(const std::string& device, std::vector<Use>& uses) {
  const std::string record = ReadUdevRecordOf(device);
  const std::string type = FindUdevProperty(record, "ID_FS_TYPE");
  const std::string uuid = FindUdevProperty(record, "ID_FS_UUID");
  if (type == "LVM2_member") uses.push_back({kGroup, uuid, ""});
  if (type == "btrfs") uses.push_back({kBtrfs, uuid, ""});
  if (type == "zfs_member") uses.push_back({kPool, FindUdevProperty(record, "ID_FS_LABEL"), ""});
}

std::string NameVolume(const StorageView& view, const std::string& path) {
  const auto volume = std::ranges::find(view.volumes, path, &InternalVolume::path);
  return volume == view.volumes.end() ? path : "volume_" + std::to_string(volume->number);
}

bool HasEmptyPlace(const MdArray& array, const std::string& place) {
  if (array.state == "inactive") return true;
  const std::int64_t number = ToNumber(place).value_or(array.disks);
  return number < array.disks && std::ranges::none_of(array.members, [&](const MdMember& member) {
           return member.slot == place && member.present && !member.Has("faulty");
         });
}

Needed FindArraysNeed(const StorageView& view, const Use& use) {
  for (const MdArray& array : view.redundancy.arrays)
    if (ReadArrayMark(array) == use.of)
      return {HasEmptyPlace(array, use.place) ? Need::Missed : Need::Filled, array.name};
  for (const ExpectedArray& array : view.redundancy.missing)
    if (array.uuid == use.of) return {Need::Missed, NameArray(array)};
  return {};
}

Needed FindGroupsNeed(const StorageView& view, const Use& use) {
  for (const ExpectedSnapshot::Group& group : view.redundancy.groups)
    if (!use.of.empty() && group.why.find(use.of) != group.why.npos)
      return {Need::Missed, group.name};
  return {};
}

// A btrfs keeps a disk that was pulled among its devices, and counts one that was not there when it
// was mounted.
Needed FindBtrfsNeed(const StorageView& view, const SeenDisk& disk, const Use& use) {
  const std::string folder = Sys("/fs/btrfs/", use.of);
  if (use.of.empty() || !PathExists(folder)) return {};
  const auto isMissing = [&folder](const std::string& member) {
    return Attribute(Concatenate(folder, "/devinfo/", member, "/missing")) == "1";
  };
  const auto isPulled = [](const std::string& device) {
    return !PathExists(Sys("/class/block/", device));
  };
  if (!std::ranges::any_of(NamesIn(folder + "/devinfo"), isMissing) &&
      !std::ranges::any_of(NamesIn(folder + "/devices"), isPulled))
    return {Need::Filled, ""};
  const auto volume = std::ranges::find(disk.uses, kVolume, &Use::kind);
  return {Need::Missed, volume == disk.uses.end() ? "" : NameVolume(view, volume->of)};
}

Needed FindPoolsNeed(const StorageView& view, const Use& use) {
  const auto pool = std::ranges::find(view.pools, use.of, &Zpool::name);
  if (pool != view.pools.end())
    return {pool->health == Health::Normal ? Need::Filled : Need::Missed, pool->name};
  std::vector<Trouble> told;  // already, with the disks
  const std::vector<std::string> missing = ListMissingZpools(told);
  if (std::ranges::find(missing, use.of) != missing.end()) return {Need::Missed, use.of};
  return {};
}

Needed FindVolumesNeed(const StorageView& view, const Use& use) {
  const auto volume = std::ranges::find(view.volumes, use.of, &InternalVolume::path);
  if (volume == view.volumes.end()) {
    const bool missing =
        std::ranges::find(view.missing, use.of, &MissingStorage::path) != view.missing.end();
    return {missing ? Need::Missed : Need::Unknown, use.of};
  }
  if (volume->status == "degraded") return {};
  return {volume->status == "crashed" ? Need::Missed : Need::Filled, NameVolume(view, use.of)};
}

}  // namespace

std::vector<Use> ListUses(const StorageView& view, const std::string& device) {
  std::vector<Use> uses;
  AddArrays(view, device, uses);
  AddContent(device, uses);
  for (const std::string& entry : NamesIn(Sys("/block/", device)))
    if (entry.starts_with(device)) AddContent(entry, uses);
  for (const InternalVolume& volume : view.volumes)
    if (std::ranges::find(volume.disks, device) != volume.disks.end())
      uses.push_back({kVolume, volume.path, ""});
  return uses;
}

Needed FindNeed(const StorageView& view, const SeenDisk& disk, const Use& use) {
  if (use.kind == kArray) return FindArraysNeed(view, use);
  if (use.kind == kGroup) return FindGroupsNeed(view, use);
  if (use.kind == kBtrfs) return FindBtrfsNeed(view, disk, use);
  if (use.kind == kPool) return FindPoolsNeed(view, use);
  return FindVolumesNeed(view, use);
}

}  // namespace linux_platform
