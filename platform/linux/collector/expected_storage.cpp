// What ought to be there, as far as only root may know it, and what it was when it was there.
#include <map>

#include "platform/linux/base/root.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/collector/scrubs.h"
#include "platform/linux/collector/volume_group.h"
#include "platform/linux/storage/expected_snapshot.h"
#include "platform/linux/storage/missing_storage.h"
#include "platform/linux/storage/seen_storage.h"
#include "platform/linux/storage/udev_record.h"
#include "platform/linux/storage/volume_choice.h"

namespace linux_platform {
namespace {

// The physical volumes that are there, by what udev read of them when they came.
std::set<std::string> ListPhysicalVolumes() {
  std::set<std::string> ids;
  std::string record;
  for (const std::string& name : NamesIn(BelowRoot("/run/udev/data"))) {
    if (!name.starts_with("b")) continue;
    ReadSmallFile(BelowRoot("/run/udev/data/", name).c_str(), std::size_t{64} << 10, record);
    if (FindUdevProperty(record, "ID_FS_TYPE") == "LVM2_member")
      ids.insert(FindUdevProperty(record, "ID_FS_UUID"));
  }
  return ids;
}

}  // namespace

Json::Value CollectSeenStorage() {
  MountTable mounts;
  ReadMounts(mounts);
  const SettingsFile settings = ReadSettings(kCurrentSettings);
  Devices devices(*mounts, settings.settings.List("esata.ports"));
  const SeenStorage before = ReadSeenStorage();
  SeenStorage seen;
  const auto remember = [&](const std::string& what, std::optional<bool> inside) {
    const Seen known = before.Find(what);
    if (inside || known != Seen::Never)
      seen.isInside[what] = inside.value_or(known == Seen::Inside);
  };
  const auto fstab = ReadFstab();
  for (const FstabLine& line : fstab->storage)
    remember(line.source, IsInside(line.source, devices));
  for (const Mount& mount : *mounts)
    if (MayBeVolume(mount, false)) remember(mount.target, IsInside(mount, devices));
  RememberScrubs(*mounts, before, seen);
  return seen.isInside.empty() && seen.scrubs.empty() ? Json::Value() : seen.ToJson();
}

Json::Value CollectExpectedStorage() {
  // LVM keeps what it last wrote onto its disks there.
  const std::string folder = BelowRoot("/etc/lvm/backup");
  const std::vector<std::string> groups = NamesIn(folder);
  if (groups.empty()) return {};
  const std::set<std::string> there = ListPhysicalVolumes();
  ExpectedSnapshot snapshot;
  std::string text;
  for (const std::string& name : groups) {
    ReadSmallFile(Within(folder, name).c_str(), std::size_t{8} << 20, text);
    if (const auto lost = FindLost(ParseVolumeGroup(text), there))
      snapshot.groups.push_back({name, lost->health, lost->why});
  }
  return snapshot.ToJson();
}

}  // namespace linux_platform
