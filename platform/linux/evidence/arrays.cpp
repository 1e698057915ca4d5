// Arrays that run without a disk, or do not run.
#include <algorithm>

#include "platform/linux/base/sysfs.h"
#include "platform/linux/evidence/cause.h"
#include "platform/linux/storage/missing_disks.h"

namespace linux_platform {
namespace {

bool IsRebuilding(const MdMember& member) {
  return member.Has("spare") && !member.IsHotSpare() && member.present;
}

bool IsLost(const MdMember& member) { return member.Has("faulty") || !member.present; }

// How a member counts; null for one that does its work or waits, as all do while nothing runs.
const char* GetRelation(const MdArray& array, const MdMember& member) {
  if (!member.present) return "missing";
  if (member.Has("faulty") || member.Has("want_replacement")) return "failed";
  return IsRebuilding(member) && array.state != "inactive" ? "rebuilding" : nullptr;
}

const char* ChooseKey(const MdArray& array, Health health) {
  const auto has = [&array](const auto& test) { return std::ranges::any_of(array.members, test); };
  if (array.state == "inactive") return "array_stopped";
  if (LostItsJournal(array)) return "array_journal_lost";
  if (health == Health::Danger) return "array_down";
  if (array.degraded > std::ranges::count_if(array.members, IsRebuilding)) return "array_degraded";
  if (array.degraded > 0) return "array_rebuilding";
  return has(IsLost) ? "array_disk_replaced" : "array_disk_failing";
}

// Per cent, of "123 / 456"; 0 before it has begun.
std::int64_t ReadProgress(const std::string& array) {
  const std::string text = Attribute(Sys("/block/", array, "/md/sync_completed"));
  const std::size_t slash = text.find(" / ");
  if (slash == text.npos) return 0;
  const std::string_view whole = text;
  const std::int64_t done = ToNumber(whole.substr(0, slash)).value_or(0);
  const std::int64_t all = ToNumber(whole.substr(slash + 3)).value_or(0);
  return all > 0 ? static_cast<std::int64_t>(100.0 * static_cast<double>(done) /
                                             static_cast<double>(all))
                 : 0;
}

// Takes the failed ones out: of those that were pulled no name is left.
std::string WriteRemoval(const MdArray& array, const MdMember& first, const std::string& node) {
  if (!first.present) return WriteCommand("mdadm {} --remove detached", {node});
  return std::ranges::count_if(array.members, IsLost) > 1
             ? WriteCommand("mdadm {} --remove failed", {node})
             : WriteCommand("mdadm {} --remove {}", {node, "/dev/" + first.device});
}

std::vector<std::string> WriteMend(const MdArray& array, std::string_view key,
                                   const std::string& node) {
  if (key == "array_stopped") return {WriteCommand("mdadm --run {}", {node})};
  // While it may be written to, it takes none.
  if (key == "array_journal_lost")
    return {WriteCommand("mdadm {} --remove failed", {node}),
            WriteCommand("mdadm --readonly {}", {node}),
            WriteCommand("mdadm {} --add-journal /dev/NEW-DISK", {node})};
  // By force it may come with what is stale: not to be written to before somebody has looked.
  if (key == "array_down")
    return {WriteCommand("mdadm --stop {}", {node}), "mdadm --assemble --force --readonly --scan"};
  std::vector<std::string> commands;
  if (array.state == "readonly") commands.push_back(WriteCommand("mdadm --readwrite {}", {node}));
  if (key == "array_rebuilding") commands.push_back(WriteCommand("mdadm --wait {}", {node}));
  const auto lost = std::ranges::find_if(array.members, IsLost);
  if (lost != array.members.end()) commands.push_back(WriteRemoval(array, *lost, node));
  if (key == "array_degraded" || key == "array_disk_failing")
    commands.push_back(WriteCommand("mdadm {} --add /dev/NEW-DISK", {node}));
  return commands;
}

// Those that the kernel does not list any more: after a restart, or once they were taken out.
void AddGone(const StorageView& view, const MdArray& array, VELAEvidence& record) {
  for (const MissingDisk& disk : FindMissingDisks(view)) {
    const auto isIt = [&](const MdMember& member) {
      return !member.present && NameDisk(view, member.device) == disk.name;
    };
    if (disk.parent != array.name) continue;
    if (record.since == 0) record.since = disk.gone;
    if (std::ranges::none_of(array.members, isIt))
      source_status::AddRelated(record, "missing", disk.name);
  }
}

VELAEvidence Describe(const StorageView& view, const MdArray& array, Health health) {
  const char* key = ChooseKey(array, health);
  VELAEvidence record = MakeEvidence(key, kOverview, array.name);
  record.figure = CountInSync(array);
  if (array.state == "inactive")
    record.figure = std::ranges::count_if(array.members, &MdMember::present);
  record.mark = array.disks;
  if (std::string_view(key) == "array_rebuilding") record.other = ReadProgress(array.name);
  for (const MdMember& member : array.members)
    if (const char* relation = GetRelation(array, member))
      source_status::AddRelated(record, relation, NameDisk(view, member.device));
  AddGone(view, array, record);
  const std::string node = "/dev/" + array.name;
  SetShow(record, WriteCommand("mdadm --detail {}", {node}));
  SetMend(record, WriteMend(array, key, node));
  return record;
}

}  // namespace

void AddArrays(const StorageView& view, Causes& causes) {
  for (const MdArray& array : view.redundancy.arrays) {
    const auto known = view.redundancy.health.find(array.name);
    if (known != view.redundancy.health.end() && known->second != Health::Normal)
      causes.push_back({known->second, Describe(view, array, known->second)});
  }
}

}  // namespace linux_platform
