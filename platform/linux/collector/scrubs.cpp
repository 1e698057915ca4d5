#include "platform/linux/collector/scrubs.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <set>

#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/collector/scrub_timers.h"
#include "platform/linux/collector/snapshot_folder.h"
#include "platform/linux/storage/block.h"
#include "platform/linux/storage/filesystem.h"

namespace linux_platform {
namespace {

constexpr std::int64_t kDay = 86400;

std::int64_t Today() { return std::time(nullptr) / kDay; }

// One day more than before, once a day. A clock that is set back counts no day again.
SeenStorage::Scrub CountOn(const std::string& name, const SeenStorage& before) {
  const auto known = before.scrubs.find(name);
  if (known == before.scrubs.end()) return {0, Today()};
  const bool isAnotherDay = Today() > known->second.looked;
  return isAnotherDay ? SeenStorage::Scrub{known->second.days + 1, Today()} : known->second;
}

// Whether a check takes several looks even at the speed that the kernel holds it to. One of a
// smaller array may come and go between two looks.
bool IsSeenWhenChecked(const std::string& folder) {
  const std::string limit = Attribute(Within(folder, "sync_speed_max"));  // "200000 (system)"
  const std::int64_t speed = ToNumber(limit.substr(0, limit.find(' '))).value_or(0);
  const std::int64_t size = NumberAttribute(Within(folder, "component_size")).value_or(0);
  return speed > 0 && size / speed >= 5 * kSnapshotPeriod;
}

void RememberChecks(const SeenStorage& before, SeenStorage& seen) {
  for (const std::string& name : ListBlockDevices()) {
    const std::string folder = Sys("/block/", name, "/md");
    const std::string action = Attribute(Within(folder, "sync_action"));
    if (action.empty() || !IsSeenWhenChecked(folder)) continue;
    const bool isChecked = action == "check" || action == "repair";
    seen.scrubs[name] = isChecked ? SeenStorage::Scrub{0, Today()} : CountOn(name, before);
  }
}

// A line for each device, "1|...|t_start:1795355697|...|finished:1". Nothing while one of them is
// not finished, or was cancelled.
std::optional<std::int64_t> ParseDayOfScrub(std::string_view text) {
  constexpr std::string_view kStart = "|t_start:";
  std::optional<std::int64_t> day;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    const std::size_t at = line.find(kStart);
    if (at == line.npos) continue;
    if (!HasWord(line, "finished:1", "|")) return {};
    const std::string_view start = line.substr(at + kStart.size());
    day = ToNumber(start.substr(0, start.find('|'))).value_or(0) / kDay;
  }
  return day;
}

SeenStorage::Scrub LookAtBtrfs(const Mount& mount, std::string_view uuid,
                               const SeenStorage& before) {
  std::string text;
  const std::string path = BelowRoot("/var/lib/btrfs/scrub.status.", uuid);
  if (ReadSmallFile(path.c_str(), std::size_t{1} << 20, text) == ReadResult::Read)
    if (const auto day = ParseDayOfScrub(text)) return {Today() - *day, Today()};
  return CountOn(mount.target, before);
}

}  // namespace

void RememberScrubs(const Mounts& mounts, const SeenStorage& before, SeenStorage& seen) {
  if (AreArraysToBeChecked()) RememberChecks(before, seen);
  std::set<std::string_view> known;  // of a file system with many mounts the first
  const BtrfsMembers members = ReadBtrfs();
  for (const Mount& mount : mounts) {
    if (mount.type != "btrfs" || !IsToBeScrubbed(mount.target)) continue;
    const Stack stack = ReadStackUnder(mount);
    const auto found = stack.layers.empty() ? members.end() : members.find(stack.layers.front());
    if (found == members.end()) continue;
    const std::string_view uuid = LastComponent(found->second->folder);
    if (known.insert(uuid).second) seen.scrubs[mount.target] = LookAtBtrfs(mount, uuid, before);
  }
}

}  // namespace linux_platform
