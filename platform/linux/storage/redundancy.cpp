#include "platform/linux/storage/redundancy.h"

#include <algorithm>

#include "platform/linux/base/root.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/storage/disk_class.h"
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
bool IsAsMeant(const MdArray& array, const Settings& settings, Redundancy& redundancy) {
  const bool empty = HasEmptyPlaces(array);
  if (const auto* meant = settings.Text("array.members." + array.name); empty && meant != nullptr)
    return CountInSync(array) >= ToNumber(meant).value_or(array.disks);
  if (!empty && !LooksLikeFirstBuild(array)) return false;
  MdSnapshot snapshot;
  std::string reason;
  const SnapshotState state = ReadSnapshot(snapshot, reason);
  const std::string asked = empty ? "how many members " + array.name + " is meant to have"
                                  : "whether " + array.name + " is being built for the first time";
  AddTrouble(state == SnapshotState::Absent ? MissCollector("only root may ask " + asked)
                                            : ToTrouble(state, reason),
             redundancy.failures);
  return empty ? snapshot.IsMeantToHave(array.name, CountInSync(array))
               : snapshot.MayBeFirstBuild(array.name);
}

void AddHealth(const std::string& name, Health health, Redundancy& redundancy) {
  redundancy.health[name] = health;
  redundancy.worst = Worse(redundancy.worst, health);
}

void ReadArrays(const std::vector<std::string>& blockDevices, const Fstab& fstab,
                const Settings& settings, Redundancy& redundancy) {
  const std::vector<ExpectedArray> configured = ReadMdadmConf(redundancy.failures);
  std::vector<ExpectedArray> tables = configured;
  for (const std::string& device : fstab.arrays) tables.push_back({device, "", ""});
  for (const std::string& name : blockDevices) {
    if (!IsMdDevice(name)) continue;
    MdArray array = ReadMdArray(name);
    Health health = JudgeMd(array, OughtToRun(array, tables));
    if (health == Health::Abnormal && IsAsMeant(array, settings, redundancy))
      health = Health::Normal;
    AddHealth(name, health, redundancy);
    redundancy.arrays.push_back(std::move(array));
  }
  for (const ExpectedArray& each : configured) {
    const auto isIt = [&each](const MdArray& array) { return IsArray(each, array); };
    if (std::ranges::none_of(redundancy.arrays, isIt)) redundancy.missing.push_back(each);
  }
}

// What everybody may see of the mappings, while the collector says nothing: the parts that LVM
// could not find, and the first mapping that nobody watches then.
void LookAtMappings(const std::vector<std::string>& blockDevices, Redundancy& redundancy) {
  std::string unwatched;
  for (const std::string& device : blockDevices) {
    if (!device.starts_with("dm-")) continue;
    const std::string folder = Sys("/block/", device, "/dm");
    const std::string name = Attribute(Within(folder, "name"));
    const std::string uuid = Attribute(Within(folder, "uuid"));
    if (IsMissingPart(name, uuid)) AddHealth(device, Health::Danger, redundancy);
    if (unwatched.empty() && OnlyRootKnows(name, uuid)) unwatched = name;
  }
  if (!unwatched.empty())
    redundancy.failures.push_back(MissCollector("only root may ask how " + unwatched + " is"));
}

// The kernel leaves out a path that fails a request. One that fails while nothing uses it, and one
// that works again, only the daemon sees.
Trouble MissPathWatcher(const std::vector<Mapping>& mappings) {
  const auto multipath = std::ranges::find(mappings, "multipath", &Mapping::kind);
  if (multipath == mappings.end() || DaemonRuns("/run/multipathd.pid", "multipathd")) return {};
  return {"nobody tries the paths of " + multipath->name + ": multipathd does not run",
          "systemctl enable --now multipathd"};
}

// The group's own list of its disks is for root alone. Without the collector it is not read: a
// plain volume whose disk is gone is seen by everybody.
void ReadGroups(Redundancy& redundancy) {
  ExpectedSnapshot snapshot;
  std::string reason;
  const SnapshotState state = ReadSnapshot(snapshot, reason);
  redundancy.groups = std::move(snapshot.groups);
  AddTrouble(ToTrouble(state, reason), redundancy.failures);
}

void ReadMappings(const std::vector<std::string>& blockDevices, Redundancy& redundancy) {
  MappingSnapshot snapshot;
  std::string reason;
  const SnapshotState state = ReadSnapshot(snapshot, reason);
  AddTrouble(state == SnapshotState::Read ? Trouble(snapshot.trouble) : ToTrouble(state, reason),
             redundancy.failures);
  AddTrouble(MissPathWatcher(snapshot.mappings), redundancy.failures);
  if (state != SnapshotState::Read) LookAtMappings(blockDevices, redundancy);
  for (const Mapping& mapping : snapshot.mappings) {
    const bool hasCopies =
        mapping.kind == "raid" || mapping.kind == "mirror" || mapping.kind == "multipath";
    if (mapping.health == Health::Normal && !hasCopies) continue;
    const std::string folder = LinkTarget(Sys("/dev/block/", mapping.device));
    if (folder.empty()) continue;
    const std::string name(LastComponent(folder));
    if (hasCopies) redundancy.withCopies.insert(name);
    AddHealth(name, mapping.health, redundancy);
  }
  redundancy.mappings = std::move(snapshot.mappings);
}

}  // namespace

bool Redundancy::HasCopies(const Stack& stack) const {
  return std::ranges::any_of(
      stack.layers, [this](const std::string& layer) { return withCopies.contains(layer); });
}

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
  ReadGroups(redundancy);
  return redundancy;
}

}  // namespace linux_platform
