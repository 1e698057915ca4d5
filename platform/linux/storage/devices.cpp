#include "platform/linux/storage/devices.h"

#include <algorithm>

#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

void Join(Stack& stack, const Stack& other) {
  for (const std::string& layer : other.layers)
    if (std::ranges::find(stack.layers, layer) == stack.layers.end()) stack.layers.push_back(layer);
  for (const std::string& disk : other.disks)
    if (std::ranges::find(stack.disks, disk) == stack.disks.end()) stack.disks.push_back(disk);
}

}  // namespace

Devices::Devices(const Mounts& mounts, std::vector<std::string_view> esataPorts)
    : mounts_(mounts), esataPorts_(std::move(esataPorts)) {
  FindSystemDisks();
}

const Devices::FileSystem& Devices::GetFileSystem(const Mount& mount) {
  const auto [place, isNew] = fileSystems_.try_emplace(
      HasAnonymousDevice(mount) ? Key{0, mount.source} : Key{mount.device, {}});
  FileSystem& found = place->second;
  if (!isNew) return found;
  found.stack = ReadStackUnder(mount);
  if (mount.type == "btrfs") AddMembers(mount, found);
  return found;
}

// The mount's source is one of the members, and may be the one that is gone.
void Devices::AddMembers(const Mount& mount, FileSystem& found) {
  if (!btrfs_) btrfs_ = ReadBtrfs();
  Stack& stack = found.stack;
  const auto whole = btrfs_->find(stack.layers.empty() ? std::string(LastComponent(mount.source))
                                                       : stack.layers.front());
  if (whole == btrfs_->end()) return;
  const Btrfs& btrfs = *whole->second;
  std::size_t lost = 0;
  for (const std::string& member : btrfs.members) {
    const Stack below = ReadStack(std::string_view(member));
    Join(stack, below);
    if (below.gone) ++lost;
  }
  stack.gone = lost == btrfs.members.size();
  found.full = btrfs.full;
  found.btrfs = Worse(btrfs.health, JudgeLoss(btrfs, lost));
}

const Stack& Devices::GetStack(const Mount& mount) { return GetFileSystem(mount).stack; }
Health Devices::GetBtrfsHealth(const Mount& mount) { return GetFileSystem(mount).btrfs; }

void Devices::FindSystemDisks() {
  for (const std::string_view target : {"/", "/var", "/boot", "/boot/efi"}) {
    const Mount* mount = mounts_.FindAt(target);
    if (mount == nullptr) continue;
    const Stack& stack = GetStack(*mount);
    systemDisks_.insert(stack.disks.begin(), stack.disks.end());
    if (target == "/") rootAndSwap_.push_back(stack);
  }
  std::string swaps;
  ReadSmallFile(BelowRoot("/proc/swaps").c_str(), std::size_t{64} << 10, swaps);
  for (const std::string& area : ParseSwaps(swaps)) {
    Stack stack = ReadStack(std::string_view(area));
    systemDisks_.insert(stack.disks.begin(), stack.disks.end());
    rootAndSwap_.push_back(std::move(stack));
  }
}

const DiskFacts& Devices::GetFacts(const std::string& disk) {
  const auto [place, isNew] = facts_.try_emplace(disk);
  DiskFacts& facts = place->second;
  if (!isNew) return facts;
  facts = ReadDiskFacts(disk, esataPorts_);
  facts.carriesSystem = CarriesSystem(disk);
  facts.mountedAsMedia = facts.ata && IsMountedAsMedia(disk);
  facts.externalPort = facts.mountedAsMedia && HasExternalPort(facts.path);
  return facts;
}

bool Devices::IsMountedAsMedia(const std::string& disk) {
  if (mediaDisks_) return mediaDisks_->contains(disk);
  mediaDisks_.emplace();
  for (const Mount& mount : mounts_) {
    if (!mount.target.starts_with("/media/") && !mount.target.starts_with("/run/media/")) continue;
    const std::vector<std::string>& below = GetStack(mount).disks;
    mediaDisks_->insert(below.begin(), below.end());
  }
  return mediaDisks_->contains(disk);
}

bool Devices::IsOffline(const Stack& stack) {
  return !stack.disks.empty() && std::ranges::all_of(stack.disks, [this](const std::string& disk) {
    return GetFacts(disk).offline;
  });
}

DiskClass Devices::Classify(const Stack& stack) {
  if (stack.disks.empty()) return DiskClass::Internal;
  const DiskClass first = Classify(stack.disks.front());
  const auto differs = [&](const std::string& disk) { return Classify(disk) != first; };
  return std::ranges::any_of(stack.disks, differs) ? DiskClass::Internal : first;
}

}  // namespace linux_platform
