#include <algorithm>

#include "common/text.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/parts/storage_parts.h"
#include "platform/linux/storage/missing_disks.h"

namespace linux_platform {
namespace {

using source_status::PartKind, source_status::PartState;

// A member that is being filled works, and is not yet what its array needs.
bool IsFilling(const MdArray& array, const WholeDisk& disk) {
  return std::ranges::any_of(array.members, [&disk](const MdMember& member) {
    return member.Has("spare") && !member.IsHotSpare() && FindDiskOf(member.device) == disk.device;
  });
}

PartState JudgeDisk(const StorageView& view, const WholeDisk& disk) {
  if (std::string_view(disk.status).ends_with("crashed") || disk.disconnected)
    return PartState::Failed;
  const auto array = std::ranges::find(view.redundancy.arrays, disk.array, &MdArray::name);
  const bool filling = array != view.redundancy.arrays.end() && IsFilling(*array, disk);
  if (disk.health != Health::Normal || filling) return PartState::Attention;
  return disk.smart.unseen ? PartState::Unknown : PartState::Well;
}

std::string FindParent(const WholeDisk& disk) {
  if (!disk.array.empty()) return disk.array;
  return disk.usedBy == "system" ? "" : NameDevice(disk.usedBy);
}

void FillIdentity(const DiskIdentity& disk, VELAPart& part) {
  common::FillField(part.device, disk.device);
  common::FillField(part.model, disk.model);
  common::FillField(part.serial, disk.serial);
  part.size = disk.size;
}

template <std::size_t Size>
bool HasSame(const char (&one)[Size], const char (&other)[Size]) {
  return one[0] != '\0' && common::ViewText(one) == common::ViewText(other);
}

// Another disk may have come into the place of one that is gone.
void LeavePlace(const std::vector<VELAPart>& disks, VELAPart& gone) {
  const auto hasPlace = [&gone](const VELAPart& disk) {
    return HasSame(disk.bay, gone.bay) || HasSame(disk.slot, gone.slot) ||
           HasSame(disk.port, gone.port);
  };
  if (std::ranges::none_of(disks, hasPlace)) return;
  std::ranges::fill(gone.bay, '\0');
  std::ranges::fill(gone.slot, '\0');
  std::ranges::fill(gone.port, '\0');
}

void AddMissing(const StorageView& view, const Bays& bays, std::vector<VELAPart>& parts) {
  for (const MissingDisk& disk : FindMissingDisks(view)) {
    if (disk.isThere) continue;
    VELAPart part = MakePart(PartKind::Disk, PartState::Missing, disk.name);
    FillIdentity(disk.identity, part);
    common::FillField(part.parent, disk.parent);
    bays.Place(disk.identity, part);
    LeavePlace(parts, part);
    parts.push_back(part);
  }
}

}  // namespace

void TellDiskParts(const StorageView& view, const Bays& bays, const TakePart& take) {
  std::vector<VELAPart> parts;
  for (const WholeDisk& disk : view.disks) {
    VELAPart& part = parts.emplace_back(MakePart(PartKind::Disk, JudgeDisk(view, disk), disk.name));
    const DiskIdentity identity =
        ReadDiskIdentity(disk.device, view.devices->GetFacts(disk.device).path);
    FillIdentity(identity, part);
    common::FillField(part.path, GetNode(disk.device));
    common::FillField(part.parent, FindParent(disk));
    bays.Place(identity, part);
  }
  AddMissing(view, bays, parts);
  for (const VELAPart& part : parts) take(part);
  bays.TellEmpty(parts, take);
}

}  // namespace linux_platform
