#include "platform/linux/storage/devices.h"

#include <sys/sysmacros.h>

#include <algorithm>

#include "platform/linux/base/root.h"

namespace linux_platform {
namespace {

void Join(Stack& stack, const Stack& other) {
  for (const std::string& layer : other.layers)
    if (std::ranges::find(stack.layers, layer) == stack.layers.end()) stack.layers.push_back(layer);
  for (const std::string& disk : other.disks)
    if (std::ranges::find(stack.disks, disk) == stack.disks.end()) stack.disks.push_back(disk);
}

}  // namespace

Devices::Devices(const std::vector<Mount>& mounts, std::vector<std::string_view> esataPorts)
    : mounts_(mounts), esataPorts_(std::move(esataPorts)) {
  FindSystemDisks();
}

Devices::FileSystem& Devices::Of(const Mount& mount) {
  const bool btrfs = mount.type == "btrfs";
  const bool bySource = btrfs || mount.type == "fuseblk";  // their device number is anonymous
  const auto [place, isNew] =
      fileSystems_.try_emplace(bySource ? Key(0, mount.source) : Key(mount.device, {}));
  FileSystem& found = place->second;
  if (!isNew || (!bySource && major(mount.device) == 0)) return found;
  found.stack = bySource ? StackOf(std::string_view(mount.source)) : StackOf(mount.device);
  if (!btrfs || found.stack.layers.empty()) return found;

  const Btrfs whole = ReadBtrfs(found.stack.layers.front());
  found.btrfs = whole.health;
  for (const std::string& member : whole.members)
    Join(found.stack, StackOf(std::string_view(member)));
  return found;
}

const Stack& Devices::Under(const Mount& mount) { return Of(mount).stack; }
Health Devices::BtrfsHealth(const Mount& mount) { return Of(mount).btrfs; }

void Devices::FindSystemDisks() {
  for (const std::string_view target : {"/", "/var", "/boot", "/boot/efi"}) {
    const Mount* mount = MountAt(mounts_, target);
    if (mount == nullptr) continue;
    const Stack& stack = Under(*mount);
    systemDisks_.insert(stack.disks.begin(), stack.disks.end());
    if (target == "/") rootAndSwap_.push_back(stack);
  }
  std::string swaps;
  ReadSmallFile(BelowRoot("/proc/swaps").c_str(), std::size_t{64} << 10, swaps);
  for (const std::string& area : ParseSwaps(swaps)) {
    Stack stack = StackOf(std::string_view(area));
    systemDisks_.insert(stack.disks.begin(), stack.disks.end());
    rootAndSwap_.push_back(std::move(stack));
  }
}

const DiskFacts& Devices::Facts(const std::string& disk) {
  const auto [place, isNew] = facts_.try_emplace(disk);
  DiskFacts& facts = place->second;
  if (!isNew) return facts;
  facts = ReadDiskFacts(disk, esataPorts_);
  facts.carriesSystem = CarriesSystem(disk);
  if (!facts.ata) return facts;
  facts.mountedAsMedia = std::ranges::any_of(mounts_, [&](const Mount& mount) {
    if (!mount.target.starts_with("/media/") && !mount.target.starts_with("/run/media/"))
      return false;
    return std::ranges::find(Under(mount).disks, disk) != Under(mount).disks.end();
  });
  return facts;
}

DiskClass Devices::Class(const Stack& stack) {
  if (stack.disks.empty()) return DiskClass::Internal;
  const DiskClass first = Class(stack.disks.front());
  const auto differs = [&](const std::string& disk) { return Class(disk) != first; };
  return std::ranges::any_of(stack.disks, differs) ? DiskClass::Internal : first;
}

}  // namespace linux_platform
