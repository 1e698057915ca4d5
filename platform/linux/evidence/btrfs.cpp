// btrfs that misses a member, or has counted errors.
#include <algorithm>
#include <sstream>

#include "common/text.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/evidence/cause.h"

namespace linux_platform {
namespace {

// What /sys says of the members, by their numbers in the file system.
struct Members {
  std::string missing;            // the number of the first that was missing when it was mounted
  std::int64_t lost = 0;          // so many are missing, or have gone since
  std::int64_t errors = 0;        // counted for all of them
  std::vector<std::string> gone;  // the kernel's names of those that have gone since
};

// Lines of "name count".
std::int64_t SumCounts(const std::string& statistics) {
  std::istringstream lines(statistics);
  std::string name;
  std::int64_t sum = 0;
  for (std::int64_t count = 0; lines >> name >> count;) sum += count;
  return sum;
}

Members ReadMembers(const Btrfs& btrfs) {
  Members members;
  const std::string infos = Within(btrfs.folder, "devinfo");
  for (const std::string& number : NamesIn(infos)) {
    const std::string member = Within(infos, number);
    members.errors += SumCounts(Attribute(Within(member, "error_stats")));
    if (NumberAttribute(Within(member, "missing")) != 1) continue;
    ++members.lost;
    if (members.missing.empty()) members.missing = number;
  }
  for (const std::string& device : btrfs.members)
    if (ReadStack(std::string_view(device)).gone) members.gone.push_back(device);
  members.lost += static_cast<std::int64_t>(members.gone.size());
  return members;
}

// With no member lost, errors were counted.
VELAEvidence Describe(const StorageView& view, const InternalVolume& volume, const Btrfs& btrfs) {
  const Members members = ReadMembers(btrfs);
  VELAEvidence record = MakeEvidence(members.lost > 0 ? "btrfs_member_missing" : "btrfs_errors",
                                     kOverview, NameVolume(volume));
  common::FillField(record.path, volume.path);
  if (members.lost == 0) {
    record.figure = members.errors;
    SetShow(record, WriteCommand("btrfs device stats {}", {volume.path}));
    SetMend(record, {WriteCommand("btrfs scrub start -B {}", {volume.path}),
                     WriteCommand("btrfs device stats -z {}", {volume.path})});
    return record;
  }
  record.figure = members.lost;
  for (const std::string& device : members.gone)
    source_status::AddRelated(record, "missing", NameDisk(view, device));
  SetShow(record, WriteCommand("btrfs filesystem show {}", {volume.path}));
  // In the background it would end with the terminal.
  const std::string id = members.missing.empty() ? "DEVID" : members.missing;
  SetMend(record, {WriteCommand("btrfs replace start -B {} /dev/NEW-DISK {}", {id, volume.path})});
  return record;
}

}  // namespace

void AddBtrfs(const StorageView& view, Causes& causes) {
  BtrfsMembers all;
  for (const InternalVolume& volume : view.volumes) {
    const Mount* mount = view.mounts->FindAt(volume.path);
    if (volume.type != "btrfs" || mount == nullptr) continue;
    const Health health = view.devices->GetBtrfsHealth(*mount);
    if (health == Health::Normal) continue;
    if (all.empty()) all = ReadBtrfs();
    const Stack& stack = view.devices->GetStack(*mount);
    const auto found = all.find(stack.layers.empty() ? std::string(LastComponent(mount->source))
                                                     : stack.layers.front());
    if (found != all.end()) causes.push_back({health, Describe(view, volume, *found->second)});
  }
}

}  // namespace linux_platform
