#include "platform/linux/storage/redundancy.h"

#include <algorithm>

#include "platform/linux/base/root.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/storage/disk_class.h"
#include "platform/linux/storage/mapping_snapshot.h"
#include "platform/linux/storage/md_snapshot.h"

namespace linux_platform {
namespace {

bool IsMdDevice(const std::string& name) {
  return name.starts_with("md") && PathExists(Sys("/block/", name, "/md"));
}

bool IsNamed(const MdArray& array, const std::vector<ExpectedArray>& tables) {
  return std::ranges::any_of(tables, [&array](const auto& each) { return IsArray(each, array); });
}

// An array that does not run ought to, when somebody named it or its members are disks of this
// machine. The half of another machine's array on a stick has not lost anything here.
bool OughtToRun(const MdArray& array, const std::vector<ExpectedArray>& tables) {
  const auto isInternal = [](const MdMember& member) {
    return member.present && !HasUsbHub(LinkTarget(Sys("/class/block/", member.device)));
  };
  return array.state == "inactive" &&
         (std::ranges::any_of(array.members, isInternal) || IsNamed(array, tables));
}

// The array has fewer members in step than places, as its owner wants it: the setting says so; or
// the collector has looked at the array when it was made, or has seen it whole with so few.
bool IsAsMeant(const MdArray& array, const Settings& settings) {
  const bool empty = HasEmptyPlaces(array);
  if (const auto* meant = settings.Text("array.members." + array.name); empty && meant != nullptr)
    return CountInSync(array) >= ToNumber(meant).value_or(array.disks);
  if (!empty && !LooksLikeFirstBuild(array)) return false;
  MdSnapshot snapshot;
  std::string reason;
  ReadSnapshot(snapshot, reason);
  return empty ? snapshot.IsMeantToHave(array.name, CountInSync(array))
               : snapshot.MayBeFirstBuild(array.name);
}

void AddHealth(const std::string& name, Health health, Redundancy& redundancy) {
  redundancy.health[name] = health;
  redundancy.worst = Worse(redundancy.worst, health);
}

void ReadArrays(const std::vector<std::string>& blockDevices, const Fstab& fstab,
                const Settings& settings, Redundancy& redundancy) {
  const std::vector<ExpectedArray> configured = ReadMdadmConf();
  std::vector<ExpectedArray> tables = configured;
  for (const std::string& device : fstab.arrays) tables.push_back({device, "", ""});
  for (const std::string& name : blockDevices) {
    if (!IsMdDevice(name)) continue;
    MdArray array = ReadMdArray(name);
    Health health = JudgeMd(array, OughtToRun(array, tables));
    if (health == Health::Abnormal && IsAsMeant(array, settings)) health = Health::Normal;
    AddHealth(name, health, redundancy);
    redundancy.arrays.push_back(std::move(array));
  }
  for (const ExpectedArray& each : configured) {
    const auto isIt = [&each](const MdArray& array) { return IsArray(each, array); };
    if (std::ranges::none_of(redundancy.arrays, isIt)) redundancy.missing.push_back(each);
  }
}

struct MappingNames {
  std::string name, uuid;
};

// The first mapping of which `needs` says so.
template <typename Needs>
std::string FindMapping(const std::vector<std::string>& blockDevices, const Needs& needs) {
  for (const std::string& device : blockDevices) {
    if (!device.starts_with("dm-")) continue;
    const std::string folder = Sys("/block/", device, "/dm");
    const MappingNames mapping = {Attribute(Within(folder, "name")),
                                  Attribute(Within(folder, "uuid"))};
    if (needs(mapping)) return mapping.name;
  }
  return {};
}

// The first mapping that nobody watches while the collector says nothing.
Trouble FindUnwatched(const std::vector<std::string>& blockDevices) {
  const std::string name = FindMapping(
      blockDevices, [](const auto& each) { return OnlyRootKnows(each.name, each.uuid); });
  return name.empty() ? Trouble() : MissCollector("only root may ask how " + name + " is");
}

// The group's own list of its disks is for root alone.
void ReadGroups(const std::vector<std::string>& blockDevices, Redundancy& redundancy) {
  ExpectedSnapshot snapshot;
  std::string reason;
  const SnapshotState state = ReadSnapshot(snapshot, reason);
  redundancy.groups = std::move(snapshot.groups);
  if (state == SnapshotState::Read || !redundancy.failure.IsNone()) return;
  redundancy.failure = ToTrouble(state, reason);
  if (state != SnapshotState::Absent) return;
  const std::string name =
      FindMapping(blockDevices, [](const auto& each) { return each.uuid.starts_with("LVM-"); });
  if (!name.empty())
    redundancy.failure =
        MissCollector("only root may ask whether the volume group of " + name + " is whole");
}

void ReadMappings(const std::vector<std::string>& blockDevices, Redundancy& redundancy) {
  MappingSnapshot snapshot;
  std::string reason;
  const SnapshotState state = ReadSnapshot(snapshot, reason);
  redundancy.failure = state == SnapshotState::Read     ? Trouble(snapshot.trouble)
                       : state == SnapshotState::Absent ? FindUnwatched(blockDevices)
                                                        : ToTrouble(state, reason);
  for (const Mapping& mapping : snapshot.mappings) {
    if (mapping.health == Health::Normal) continue;
    const std::string folder = LinkTarget(Sys("/dev/block/", mapping.device));
    if (!folder.empty()) AddHealth(std::string(LastComponent(folder)), mapping.health, redundancy);
  }
}

}  // namespace

Health Redundancy::GetHealth(const Stack& stack) const {
  Health worstLayer = Health::Normal;
  for (const std::string& layer : stack.layers) {
    const auto known = health.find(layer);
    if (known != health.end()) worstLayer = Worse(worstLayer, known->second);
  }
  return worstLayer;
}

Redundancy ReadRedundancy(const std::vector<std::string>& blockDevices, const Fstab& fstab,
                          const Settings& settings) {
  Redundancy redundancy;
  ReadArrays(blockDevices, fstab, settings, redundancy);
  const auto isMapping = [](const std::string& name) { return name.starts_with("dm-"); };
  if (std::ranges::any_of(blockDevices, isMapping)) ReadMappings(blockDevices, redundancy);
  ReadGroups(blockDevices, redundancy);
  return redundancy;
}

}  // namespace linux_platform
