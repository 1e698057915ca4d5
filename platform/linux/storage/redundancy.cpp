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

constexpr std::size_t kTableCap = std::size_t{256} << 10;

bool IsMdDevice(const std::string& name) {
  return name.starts_with("md") && PathExists(Sys("/block/", name, "/md"));
}

// `tables` holds the text of fstab and mdadm.conf.
bool IsNamed(const std::string& tables, const std::string& array) {
  constexpr std::string_view kBlanks = " \t\n";
  return HasWord(tables, "/dev/" + array, kBlanks) ||
         HasWord(tables, "/dev/md/" + array.substr(2), kBlanks);
}

// An array that does not run ought to, when somebody named it or its members are disks of this
// machine. The half of another machine's array on a stick has not lost anything here.
bool OughtToRun(const MdArray& array, const std::string& tables) {
  const auto isInternal = [](const MdMember& member) {
    return member.present && !HasUsbHub(LinkTarget(Sys("/class/block/", member.device)));
  };
  return array.state == "inactive" &&
         (std::ranges::any_of(array.members, isInternal) || IsNamed(tables, array.name));
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

void ReadArrays(const std::vector<std::string>& blockDevices, const std::string& fstab,
                const Settings& settings, Redundancy& redundancy) {
  std::string tables;
  for (const std::string& name : blockDevices) {
    if (!IsMdDevice(name)) continue;
    if (tables.empty()) {
      ReadSmallFile(BelowRoot("/etc/mdadm/mdadm.conf").c_str(), kTableCap, tables);
      tables.append("\n").append(fstab);
    }
    MdArray array = ReadMdArray(name);
    Health health = JudgeMd(array, OughtToRun(array, tables));
    if (health == Health::Abnormal && IsAsMeant(array, settings)) health = Health::Normal;
    AddHealth(name, health, redundancy);
    redundancy.arrays.push_back(std::move(array));
  }
}

// The first mapping that nobody watches while the collector says nothing.
Trouble FindUnwatched(const std::vector<std::string>& blockDevices) {
  for (const std::string& device : blockDevices) {
    if (!device.starts_with("dm-")) continue;
    const std::string folder = Sys("/block/", device, "/dm");
    const std::string name = Attribute(Within(folder, "name"));
    if (OnlyRootKnows(name, Attribute(Within(folder, "uuid"))))
      return MissCollector("only root may ask how " + name + " is");
  }
  return {};
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

Redundancy ReadRedundancy(const std::vector<std::string>& blockDevices, const std::string& fstab,
                          const Settings& settings) {
  Redundancy redundancy;
  ReadArrays(blockDevices, fstab, settings, redundancy);
  const auto isMapping = [](const std::string& name) { return name.starts_with("dm-"); };
  if (std::ranges::any_of(blockDevices, isMapping)) ReadMappings(blockDevices, redundancy);
  return redundancy;
}

}  // namespace linux_platform
