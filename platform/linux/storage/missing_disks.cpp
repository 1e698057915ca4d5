#include "platform/linux/storage/missing_disks.h"

#include <algorithm>

#include "platform/linux/base/snapshot.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/storage/disk_uses.h"

namespace linux_platform {
namespace {

using Use = SeenDisk::Use;

constexpr std::int64_t kLongestMemory = std::int64_t{366} * 86400;  // seconds

// A disk without a serial number is the one at its port that has the kernel's name.
bool IsSame(const DiskIdentity& one, const DiskIdentity& other) {
  if (one.serial.empty() && other.serial.empty())
    return one.device == other.device && one.port == other.port;
  return one.serial == other.serial;
}

bool Serves(const std::vector<Use>& uses, const Use& use) {
  return std::ranges::any_of(uses, [&use](const Use& each) { return each.IsOf(use); });
}

struct PresentDisk {
  std::string name;  // "Disk 3"
  DiskIdentity identity;
  std::vector<Use> uses;
};

std::vector<PresentDisk> ListPresent(const StorageView& view) {
  std::vector<PresentDisk> present;
  for (const WholeDisk& disk : view.disks)
    present.push_back({disk.name,
                       ReadDiskIdentity(disk.device, view.devices->GetFacts(disk.device).path),
                       ListUses(view, disk.device)});
  return present;
}

const PresentDisk* FindPresent(const std::vector<PresentDisk>& present, const SeenDisk& disk) {
  const auto found = std::ranges::find_if(
      present, [&disk](const auto& each) { return IsSame(each.identity, disk.identity); });
  return found == present.end() ? nullptr : &*found;
}

// Whether something may be short of a disk. A machine that is well pays no look.
bool IsAnythingShort(const StorageView& view) {
  return view.overview != Health::Normal || view.systemCrashed || !view.missing.empty();
}

// "sdc" of "sdc1", "nvme0n1" of "nvme0n1p2"; "" of what is no disk's.
std::string StripPartition(std::string device) {
  if (IsDiskName(device)) return device;
  device.erase(device.find_last_not_of("0123456789") + 1);
  if (device.ends_with('p')) device.pop_back();
  return IsDiskName(device) ? device : "";
}

class Finder {
 public:
  explicit Finder(const StorageView& view) : view_(view), present_(ListPresent(view)) {}

  std::vector<MissingDisk> Find() {
    SeenDisks seen = SeenDisks::FromJson(ReadMemory(SeenDisks::kSource));
    // Of two disks that had the same place, the later one is missed.
    std::ranges::stable_sort(seen.disks, std::ranges::greater(), [this](const SeenDisk& disk) {
      return std::pair(FindPresent(present_, disk) != nullptr || disk.gone == 0, disk.gone);
    });
    for (const SeenDisk& disk : seen.disks) AddSeen(disk);
    AddUnseen();
    return std::move(missing_);
  }

 private:
  void AddSeen(const SeenDisk& disk) {
    const PresentDisk* present = FindPresent(present_, disk);
    for (const Use& use : disk.uses) {
      const Needed needed = FindNeed(view_, disk, use);
      if (needed.need != Need::Missed || IsFound(use)) continue;
      if (!use.place.empty()) found_.push_back(use);
      if (present == nullptr || DoesWithout(use, needed.by, *present))
        return Add(disk, present, needed.by);
    }
  }

  // Whether the array runs, and has put the disk out.
  bool DoesWithout(const Use& use, const std::string& array, const PresentDisk& disk) const {
    const std::vector<MdArray>& arrays = view_.redundancy.arrays;
    const auto found = std::ranges::find(arrays, array, &MdArray::name);
    return found != arrays.end() && found->state != "inactive" && !use.place.empty() &&
           !Serves(disk.uses, use);
  }

  bool IsFound(const Use& use) const {
    return std::ranges::any_of(
        found_, [&use](const Use& each) { return each.IsOf(use) && each.place == use.place; });
  }

  void Add(const SeenDisk& disk, const PresentDisk* present, const std::string& parent) {
    const auto& [device, serial] = std::tie(disk.identity.device, disk.identity.serial);
    const bool isTaken = std::ranges::find(missing_, device, &MissingDisk::name) != missing_.end();
    const std::string own = isTaken || device.empty() ? serial : device;
    missing_.push_back({present != nullptr ? present->name : own, parent, present != nullptr,
                        disk.identity, disk.gone});
  }

  // What the kernel still names, and nobody saw in time.
  void AddUnseen() {
    for (const MdArray& array : view_.redundancy.arrays)
      for (const MdMember& member : array.members)
        if (!member.present) AddName(member.device, array.name);
    for (const InternalVolume& volume : view_.volumes) {
      if (volume.status != "crashed" || volume.device == 0) continue;
      const std::string name = "volume_" + std::to_string(volume.number);
      for (const std::string& disk : volume.disks) AddName(disk, name);
      const Mount* mount = view_.mounts->FindAt(volume.path);
      if (mount != nullptr && mount->source.starts_with("/dev/"))
        AddName(std::string(LastComponent(mount->source)), name);
    }
  }

  void AddName(const std::string& device, const std::string& parent) {
    const std::string disk = StripPartition(device);
    const auto isIt = [&disk](const MissingDisk& each) { return each.identity.device == disk; };
    if (disk.empty() || PathExists(Sys("/class/block/", disk)) ||
        std::ranges::any_of(missing_, isIt))
      return;
    SeenDisk unseen;
    unseen.identity.device = disk;
    Add(unseen, nullptr, parent);
  }

  const StorageView& view_;
  const std::vector<PresentDisk> present_;
  std::vector<Use> found_;  // places, with the disk that was last there
  std::vector<MissingDisk> missing_;
};

// What the disk serves, and what may miss it: a member that failed has lost its place, and an array
// that is not there yet may come without it.
std::vector<Use> JoinUses(const StorageView& view, const SeenDisk& before, std::vector<Use> now) {
  for (const Use& use : before.uses) {
    const auto known = std::ranges::find_if(now, [&](const Use& each) { return each.IsOf(use); });
    if (known != now.end() && known->place.empty()) known->place = use.place;
    if (known != now.end()) continue;
    const Need need = FindNeed(view, before, use).need;
    if (need == Need::Missed || (need == Need::Unknown && !use.place.empty())) now.push_back(use);
  }
  return now;
}

}  // namespace

std::vector<MissingDisk> FindMissingDisks(const StorageView& view) {
  if (!IsAnythingShort(view)) return {};
  return Finder(view).Find();
}

SeenDisks RememberDisks(const StorageView& view, const SeenDisks& before, std::int64_t now) {
  const std::vector<PresentDisk> present = ListPresent(view);
  SeenDisks seen;
  for (const PresentDisk& disk : present) {
    const auto isIt = [&disk](const SeenDisk& each) {
      return IsSame(each.identity, disk.identity);
    };
    if (std::ranges::any_of(seen.disks, isIt)) continue;  // another way to it
    const auto known = std::ranges::find_if(before.disks, isIt);
    seen.disks.push_back(
        {disk.identity, known == before.disks.end() ? disk.uses : JoinUses(view, *known, disk.uses),
         0});
  }
  for (const SeenDisk& disk : before.disks) {
    if (FindPresent(present, disk) != nullptr) continue;
    SeenDisk gone = disk;
    if (gone.gone == 0) gone.gone = now;
    std::erase_if(gone.uses,
                  [&](const Use& use) { return FindNeed(view, disk, use).need == Need::Filled; });
    if (!gone.uses.empty() && now - gone.gone < kLongestMemory) seen.disks.push_back(gone);
  }
  return seen;
}

}  // namespace linux_platform
