#include "platform/linux/storage/md.h"

#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

bool IsMirror(const MdArray& array) { return array.level == "raid1"; }

bool HasLostMember(const MdArray& array) {
  return std::ranges::any_of(array.members,
                             [](const auto& each) { return each.Has("faulty") || !each.present; });
}

// A mirror with a place for each bay of the machine, most of them empty, was made that way: nobody
// loses two disks of three and has two left.
bool IsSparseMirror(const MdArray& array) {
  const std::int64_t inSync = CountInSync(array);
  return IsMirror(array) && !HasLostMember(array) && inSync >= 2 &&
         array.disks - inSync >= 2 * inSync;
}

// Nothing to be judged: a container, an array that is being taken apart, a sparse mirror.
bool IsNoArray(const MdArray& array) {
  if (array.state == "clear" || array.level == "container") return true;
  const bool firmware = array.metadata == "external:imsm" || array.metadata == "external:ddf";
  return (firmware && array.state == "inactive") || IsSparseMirror(array);
}

// More members lost than the level can bear.
bool IsBeyondRedundancy(const MdArray& array) {
  if (array.state == "broken" || LostItsJournal(array)) return true;
  if (IsMirror(array)) return array.degraded >= array.disks && array.disks > 0;
  if (array.level == "raid4" || array.level == "raid5") return array.degraded > 1;
  if (array.level == "raid6") return array.degraded > 2;
  if (array.level != "raid0" && array.level != "linear") return false;
  // These have no count of lost members: their members tell.
  const auto lost = [](const MdMember& member) { return member.Has("faulty") || !member.present; };
  return std::ranges::any_of(array.members, lost) ||
         static_cast<std::int64_t>(array.members.size()) < array.disks;
}

}  // namespace

bool MdMember::Has(const char* word) const { return HasWord(state, word); }
bool MdMember::IsHotSpare() const { return Has("spare") && slot == "none"; }

MdArray ReadMdArray(const std::string& name) {
  const std::string folder = Sys("/block/", name, "/md");
  MdArray array;
  array.name = name;
  array.level = Attribute(Within(folder, "level"));
  array.state = Attribute(Within(folder, "array_state"));
  array.metadata = Attribute(Within(folder, "metadata_version"));
  // While a reshape runs: "5 (4)".
  const std::string disks = Attribute(Within(folder, "raid_disks"));
  array.disks = ToNumber(disks.substr(0, disks.find(' '))).value_or(0);
  array.degraded = NumberAttribute(Within(folder, "degraded")).value_or(0);
  if (HasParity(array)) array.policy = Attribute(Within(folder, "consistency_policy"));
  for (const std::string& entry : NamesIn(folder)) {
    if (!entry.starts_with("dev-")) continue;
    const std::string member = Within(folder, entry);
    MdMember& added = array.members.emplace_back();
    added = {entry.substr(4), Attribute(Within(member, "state")),
             Attribute(Within(member, "slot"))};
    // A member has its slot for as long as it has its folder: without one, this is no whole /sys.
    added.present = added.slot.empty() || PathExists(Within(member, "block"));
    // The kernel counts it as soon as it writes or reads there.
    if (!added.present && added.Has("in_sync")) ++array.degraded;
  }
  return array;
}

bool HasParity(const MdArray& array) {
  return array.level == "raid4" || array.level == "raid5" || array.level == "raid6";
}

std::int64_t CountInSync(const MdArray& array) {
  return std::ranges::count_if(array.members, [](const MdMember& member) {
    return member.Has("in_sync") && member.present;
  });
}

bool HasEmptyPlaces(const MdArray& array) {
  const auto isFilling = [](const MdMember& member) {
    return member.Has("spare") && !member.IsHotSpare();
  };
  return array.degraded > 0 && !HasLostMember(array) &&
         std::ranges::none_of(array.members, isFilling);
}

bool LostItsJournal(const MdArray& array) {
  const auto works = [](const MdMember& member) {
    return member.Has("journal") && !member.Has("faulty") && member.present;
  };
  const auto isJournal = [](const MdMember& member) { return member.Has("journal"); };
  return (array.policy == "journal" || std::ranges::any_of(array.members, isJournal)) &&
         std::ranges::none_of(array.members, works);
}

bool LooksLikeFirstBuild(const MdArray& array) {
  if ((array.level != "raid4" && array.level != "raid5") || array.degraded != 1) return false;
  const std::string last = std::to_string(array.disks - 1);
  std::int64_t whole = 0, filling = 0;
  for (const MdMember& member : array.members) {
    if (member.state == "in_sync") ++whole;
    if (member.state == "spare" && member.slot == last) ++filling;
    if (member.Has("faulty") || !member.present) return false;
  }
  return whole == array.disks - 1 && filling == 1;
}

Health JudgeMd(const MdArray& array, bool expected) {
  if (IsNoArray(array)) return Health::Normal;
  if (array.state == "inactive") return expected ? Health::Danger : Health::Abnormal;
  if (IsBeyondRedundancy(array)) return Health::Danger;
  const auto failing = [](const MdMember& member) {
    return member.Has("want_replacement") || member.Has("faulty");
  };
  if (array.degraded > 0 || std::ranges::any_of(array.members, failing)) return Health::Abnormal;
  return Health::Normal;
}

}  // namespace linux_platform
