#include "platform/linux/storage/storage_view.h"

#include <cerrno>
#include <cstring>

#include "platform/linux/base/root.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/storage/external_capacity.h"

namespace linux_platform {
namespace {

Health FindWorst(const StorageView& view, Health volumes) {
  Health worst = Worse(view.redundancy.worst, volumes);
  for (const MissingStorage& missing : view.missing) worst = Worse(worst, missing.health);
  for (const Zpool& pool : view.pools) worst = Worse(worst, pool.health);
  for (const WholeDisk& disk : view.disks) worst = Worse(worst, disk.health);
  return worst;
}

}  // namespace

StorageView ReadStorage(const Settings& settings) {
  StorageView view;
  if (!ReadMounts(view.mounts))
    view.failure = std::string("the mount table could not be read: ") + std::strerror(errno);
  const Mounts& mounts = *view.mounts;
  const auto fstab = ReadFstab();
  view.devices = std::make_shared<Devices>(mounts, settings.List("esata.ports"));
  Devices& devices = *view.devices;
  const std::vector<std::string> blockDevices = ListBlockDevices();
  view.listsDisks = !blockDevices.empty();

  Redundancy& redundancy = view.redundancy = ReadRedundancy(blockDevices, *fstab, settings);
  view.missing = FindMissing(mounts, *fstab, devices, redundancy);
  InternalVolumes volumes =
      ReadVolumes(mounts, settings, {fstab->targets, view.missing}, devices, redundancy);
  InternalDisks disks = ReadDisks(devices, blockDevices, redundancy.arrays, volumes.all);
  view.disks = std::move(disks.all);
  view.smart = std::move(disks.smart);
  view.external = ChooseExternal(mounts, devices);
  MeasureExternal(view.external);
  for (std::string& pool : ListZpools()) {
    const Health health = ReadZpool(pool);
    view.pools.push_back({std::move(pool), health});
  }

  view.overview = FindWorst(view, volumes.worst);
  view.volumes = std::move(volumes.all);
  view.troubledSystem = std::move(volumes.troubledSystem);
  view.systemCrashed = volumes.systemCrashed;
  view.hidden = std::move(volumes.hidden);
  view.diskFailures = std::move(redundancy.failures);
  if (!view.pools.empty()) AddTrouble(MissZed(), view.diskFailures);
  // Who watches the devices that a container shows, its host knows.
  const bool isWatched = view.smart.gaps.empty() && view.diskFailures.empty();
  if (!isWatched && IsContainer(mounts)) {
    view.smart.gaps.clear();
    view.diskFailures.clear();
  }
  return view;
}

}  // namespace linux_platform
