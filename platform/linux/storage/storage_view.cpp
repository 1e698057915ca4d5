#include "platform/linux/storage/storage_view.h"

#include <cerrno>
#include <cstring>

#include "platform/linux/base/root.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/storage/zfs.h"

namespace linux_platform {

StorageView ReadStorage(const Settings& settings) {
  StorageView view;
  MountTable mounts;
  if (!ReadMounts(mounts))
    view.failure = std::string("the mount table could not be read: ") + std::strerror(errno);
  const auto fstab = ReadFstab();
  Devices devices(*mounts, settings.List("esata.ports"));
  const std::vector<std::string> blockDevices = ListBlockDevices();
  view.listsDisks = !blockDevices.empty();

  Redundancy redundancy = ReadRedundancy(blockDevices, *fstab, settings);
  view.missing = FindMissing(*mounts, *fstab, devices, redundancy);
  InternalVolumes volumes =
      ReadVolumes(*mounts, settings, {fstab->targets, view.missing}, devices, redundancy);
  InternalDisks disks = ReadDisks(devices, blockDevices, redundancy.arrays, volumes.all);
  view.disks = std::move(disks.all);
  view.smart = std::move(disks.smart);
  view.external = ChooseExternal(*mounts, devices);

  view.overview = Worse(redundancy.worst, volumes.worst);
  for (const MissingStorage& missing : view.missing)
    view.overview = Worse(view.overview, missing.health);
  const std::vector<std::string> pools = ListZpools();
  for (const std::string& pool : pools) view.overview = Worse(view.overview, ReadZpool(pool));
  for (const WholeDisk& disk : view.disks) view.overview = Worse(view.overview, disk.health);
  view.volumes = std::move(volumes.all);
  view.systemCrashed = volumes.systemCrashed;
  view.hidden = std::move(volumes.hidden);
  view.diskFailures = std::move(redundancy.failures);
  if (!pools.empty()) AddTrouble(MissZed(), view.diskFailures);
  // Who watches the devices that a container shows, its host knows.
  const bool isWatched = view.smart.gaps.empty() && view.diskFailures.empty();
  if (!isWatched && IsContainer(*mounts)) {
    view.smart.gaps.clear();
    view.diskFailures.clear();
  }
  return view;
}

}  // namespace linux_platform
