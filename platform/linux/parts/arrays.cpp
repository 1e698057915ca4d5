#include <algorithm>

#include "common/text.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/parts/storage_parts.h"

namespace linux_platform {
namespace {

using source_status::PartKind, source_status::PartState;

// "RAID 5" of "raid5"; others, as "linear", are themselves.
std::string FormatLevel(const std::string& level) {
  constexpr std::string_view kRaid = "raid";
  return level.starts_with(kRaid) ? "RAID " + level.substr(kRaid.size()) : level;
}

Health FindHealth(const StorageView& view, const std::string& device) {
  const auto known = view.redundancy.health.find(device);
  return known == view.redundancy.health.end() ? Health::Normal : known->second;
}

void TellArray(const StorageView& view, const Users& users, const MdArray& array,
               const TakePart& take) {
  VELAPart part = MakePart(PartKind::Array, ToState(FindHealth(view, array.name)), array.name);
  common::FillField(part.device, array.name);
  common::FillField(part.path, GetNode(array.name));
  common::FillField(part.parent, users.Find(array.name));
  common::FillField(part.model, FormatLevel(array.level));
  part.size = ReadDeviceSize(array.name);
  take(part);
}

void TellPool(std::string_view name, PartState state, const TakePart& take) {
  VELAPart part = MakePart(PartKind::Array, state, name);
  common::FillField(part.model, "ZFS");
  take(part);
}

}  // namespace

void TellArrayParts(const StorageView& view, const TakePart& take) {
  const Users users(view);
  for (const MdArray& array : view.redundancy.arrays) TellArray(view, users, array, take);
  for (const ExpectedArray& missing : view.redundancy.missing) {
    VELAPart part = MakePart(PartKind::Array, PartState::Missing, NameArray(missing));
    common::FillField(part.path, missing.device);
    take(part);
  }
  for (const Zpool& pool : view.pools) TellPool(pool.name, ToState(pool.health), take);
  std::vector<Trouble> told;  // already, with the disks
  for (const std::string& pool : ListMissingZpools(told)) TellPool(pool, PartState::Missing, take);
}

}  // namespace linux_platform
