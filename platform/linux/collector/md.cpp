// What only the arrays themselves know, and tell root alone.
// Which are being built for the first time: a new RAID 4 or 5 is built by filling its last member
// from the others, which in /sys looks like the replacement of a lost one. When the array was
// made tells the two apart.
// How many members an array is meant to have: one that was made with places to be filled later
// looks like one whose failed members were taken out.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/types.h>

#include <linux/major.h>
#include <linux/raid/md_u.h>

#include <cstdint>
#include <ctime>
#include <map>

#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/collector/snapshot_folder.h"
#include "platform/linux/storage/block.h"
#include "platform/linux/storage/filesystem.h"
#include "platform/linux/storage/md.h"
#include "platform/linux/storage/md_snapshot.h"

namespace linux_platform {
namespace {

std::int64_t BootTime() {
  std::string text;
  ReadSmallFile(BelowRoot("/proc/stat").c_str(), std::size_t{1} << 20, text);
  return ParseBootTime(text);
}

// When the array was made, in seconds since 1970; 0 when it does not tell.
std::int64_t ReadTimeOfMaking(const std::string& array) {
  const std::string node = BelowRoot("/dev/") + array;
  const Descriptor device = Open(node, O_RDONLY);
  mdu_array_info_t info = {};
  const bool tells = device && ioctl(device.Get(), GET_ARRAY_INFO, &info) == 0;
  return tells ? static_cast<std::uint32_t>(info.ctime) : 0;
}

bool WasMadeInThisBoot(std::int64_t made) {
  const std::int64_t boot = BootTime();
  return boot > 0 && made >= boot;
}

// A whole array is as it is meant; so is one that had empty places when it was made, a moment ago.
void AddMaking(const MdArray& array, std::int64_t made, const MdSnapshot& before,
               MdSnapshot& snapshot) {
  const auto known = before.makings.find(array.name);
  const bool isKnown = known != before.makings.end() && known->second.made == made;
  const auto isNewWithEmptyPlaces = [&] {
    return std::time(nullptr) - made <= 2 * kSnapshotPeriod && HasEmptyPlaces(array) &&
           !HasFormerMember(array);
  };
  if (array.degraded != 0 && isKnown)
    snapshot.makings.insert(*known);
  else if (array.degraded == 0 || isNewWithEmptyPlaces())
    snapshot.makings[array.name] = {made, CountInSync(array)};
}

// A mirror's mismatches are no sign of anything: what is written while the copies are made may
// differ in them for good. Nor is what a first build, a resync or a repair counts: they mend it.
std::int64_t ReadMismatches(const MdArray& array, const std::string& folder) {
  if (!HasParity(array) || Attribute(Within(folder, "last_sync_action")) != "check") return 0;
  return NumberAttribute(Within(folder, "mismatch_cnt")).value_or(0);
}

void AddNotes(const MdArray& array, MdSnapshot& snapshot) {
  const std::string folder = Sys("/block/", array.name, "/md");
  MdSnapshot::Notes notes = {ReadMismatches(array, folder), {}};
  for (const MdMember& member : array.members)
    if (!Attribute(Concatenate(folder, "/dev-", member.device, "/bad_blocks")).empty())
      notes.badBlocks.push_back(member.device);
  if (notes.mismatches > 0 || !notes.badBlocks.empty())
    snapshot.notes[array.name] = std::move(notes);
}

}  // namespace

bool HasFormerMember(const MdArray& array) {
  constexpr std::string_view kKey = "\nE:ID_FS_UUID=";
  const std::string folder = BelowRoot("/run/udev/data");
  std::map<std::string, std::size_t> carriers;  // by the array that they name
  std::string own;
  for (const std::string& name : NamesIn(folder)) {
    if (!name.starts_with("b")) continue;
    const std::string text = "\n" + Attribute(Within(folder, name)) + "\n";
    const std::size_t line = text.find(kKey);
    if (line == text.npos || text.find("\nE:ID_FS_TYPE=linux_raid_member\n") == text.npos) continue;
    const std::size_t start = line + kKey.size();
    const std::string uuid = text.substr(start, text.find('\n', start) - start);
    ++carriers[uuid];
    const auto serves = [&name](const MdMember& member) {
      return "b" + Attribute(Sys("/class/block/", member.device, "/dev")) == name;
    };
    if (std::ranges::any_of(array.members, serves)) own = uuid;
  }
  return !own.empty() && carriers[own] > array.members.size();
}

Json::Value CollectMd() {
  const MdSnapshot before = MdSnapshot::FromJson(ReadLastSnapshot(MdSnapshot::kSource));
  MdSnapshot snapshot;
  for (const std::string& name : ListBlockDevices()) {
    if (!name.starts_with("md") || !PathExists(Sys("/block/") + name + "/md")) continue;
    const MdArray array = ReadMdArray(name);
    const std::int64_t made = ReadTimeOfMaking(name);
    snapshot.isFirstBuild[name] =
        !before.IsBuilt(name) && LooksLikeFirstBuild(array) && WasMadeInThisBoot(made);
    AddMaking(array, made, before, snapshot);
    AddNotes(array, snapshot);
  }
  return snapshot.isFirstBuild.empty() ? Json::Value() : snapshot.ToJson();
}

}  // namespace linux_platform
