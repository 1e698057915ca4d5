#include "platform/linux/storage/filesystem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>

#include <array>
#include <cerrno>
#include <charconv>

#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

template <std::size_t N>
bool IsOneOf(const std::string& text, const std::array<const char*, N>& words) {
  return std::ranges::any_of(words, [&text](const char* word) { return text == word; });
}

// Lines of "name count".
bool CountsAnything(const std::string& errorStatistics) {
  for (std::size_t blank = 0; (blank = errorStatistics.find(' ', blank)) != std::string::npos;) {
    ++blank;
    if (blank < errorStatistics.size() && errorStatistics[blank] != '0') return true;
  }
  return false;
}

bool HasTrouble(const std::string& member) {
  return NumberAttribute(member + "/missing") == 1 ||
         CountsAnything(Attribute(member + "/error_stats"));
}

std::int64_t Sum(const std::string& folder, const std::vector<std::string>& names,
                 const std::string& attribute) {
  std::int64_t sum = 0;
  for (const std::string& name : names)
    sum += NumberAttribute(Concatenate(folder, "/", name, "/", attribute)).value_or(0);
  return sum;
}

// Metadata that have no room left and nowhere to grow: each alone is how a btrfs lives for years.
// What btrfs keeps back of the metadata to be able to delete counts as in use.
bool IsFull(const std::string& folder, const std::vector<std::string>& members) {
  const std::string allocation = Within(folder, "allocation");
  const auto metadata = [&](const char* name) {
    return NumberAttribute(Concatenate(allocation, "/", name)).value_or(0);
  };
  const std::int64_t total = members.empty() ? 0 : metadata("metadata/total_bytes");
  if (total <= 0) return false;
  const std::int64_t used = metadata("metadata/bytes_used") + metadata("global_rsv_size");
  if (used * 20 <= total * 19) return false;
  constexpr std::int64_t kSector = 512, kTooLittle = std::int64_t{16} << 20;
  const std::int64_t all = Sum(Within(folder, "devices"), members, "size") * kSector;
  const std::int64_t allotted = Sum(allocation, {"data", "metadata", "system"}, "disk_total");
  const auto left =
      all - allotted;  // less than nothing: a member is missing, whose size none tells
  return left >= 0 && left < kTooLittle * static_cast<std::int64_t>(members.size());
}

}  // namespace

bool HasAnonymousDevice(const Mount& mount) {
  return mount.type == "btrfs" || mount.type == "fuseblk";
}

bool ReadCapacity(const std::string& path, dev_t device, Capacity& capacity) {
  const Descriptor root = Open(path, O_PATH);
  struct stat status = {};
  struct statfs figures = {};
  if (!root || fstat(root.Get(), &status) != 0) return false;
  if (major(device) != 0 && status.st_dev != device) {
    errno = ENODEV;
    return false;
  }
  if (fstatfs(root.Get(), &figures) != 0) return false;
  const auto unit = static_cast<std::uint64_t>(figures.f_frsize);
  capacity.size = figures.f_blocks * unit;
  capacity.free = figures.f_bfree * unit;
  capacity.available = figures.f_bavail * unit;
  capacity.files = figures.f_files;
  capacity.freeFiles = figures.f_ffree;
  return true;
}

Stack ReadStackUnder(const Mount& mount) {
  if (HasAnonymousDevice(mount)) return ReadStack(std::string_view(mount.source));
  return major(mount.device) != 0 ? ReadStack(mount.device) : Stack();
}

Ext4Errors ReadExt4Errors(const std::string& name) {
  const std::string folder = Sys("/fs/ext4/", name);
  Ext4Errors errors;
  errors.count = NumberAttribute(Within(folder, "errors_count")).value_or(0);
  if (errors.count == 0) return errors;
  errors.last = NumberAttribute(Within(folder, "last_error_time")).value_or(0);
  errors.stops =
      HasWord(Attribute(BelowRoot("/proc/fs/ext4/", name, "/options")), "errors=remount-ro", "\n");
  for (const char* which : {"first_error_func", "last_error_func"})
    if (Attribute(Within(folder, which)) == "ext4_journal_check_start")
      errors.journalAborted = true;
  return errors;
}

BtrfsMembers ReadBtrfs() {
  const std::string all = Sys("/fs/btrfs/");
  BtrfsMembers members;
  for (const std::string& uuid : NamesIn(all)) {
    const std::string folder = all + uuid, infos = folder + "/devinfo";
    const auto btrfs = std::make_shared<Btrfs>();
    btrfs->folder = folder;
    btrfs->members = NamesIn(folder + "/devices");
    for (const std::string& info : NamesIn(infos))
      if (HasTrouble(Within(infos, info))) btrfs->health = Health::Abnormal;
    btrfs->full = IsFull(folder, btrfs->members);
    for (const std::string& member : btrfs->members) members.try_emplace(member, btrfs);
  }
  return members;
}

Health JudgeLoss(const Btrfs& btrfs, std::size_t lost) {
  constexpr std::pair<const char*, std::size_t> kSpares[] = {
      {"single", 0}, {"dup", 0},   {"raid0", 0},   {"raid1", 1},  {"raid10", 1},
      {"raid5", 1},  {"raid6", 2}, {"raid1c3", 2}, {"raid1c4", 3}};
  if (lost == 0) return Health::Normal;
  for (const char* kind : {"data", "metadata", "system"})
    for (const auto& [profile, spare] : kSpares) {
      // One that holds nothing is left over from when the file system was made or converted.
      const std::string used =
          Concatenate(btrfs.folder, "/allocation/", kind, "/") + profile + "/used_bytes";
      if (lost > spare && NumberAttribute(used).value_or(0) > 0) return Health::Danger;
    }
  return Health::Abnormal;
}

CrashSigns FindCrashSigns(const Mount& mount) {
  constexpr std::array kStopsAtErrors = {"ext2", "ext3", "ext4", "xfs",  "btrfs",
                                         "f2fs", "jfs",  "vfat", "exfat"};
  CrashSigns signs;
  signs.emergencyReadOnly =
      HasWord(mount.superOptions, "emergency_ro") || HasWord(mount.superOptions, "shutdown");
  signs.forcedReadOnly = HasWord(mount.options, "rw") && HasWord(mount.superOptions, "ro") &&
                         IsOwnMount(mount) && IsOneOf(mount.type, kStopsAtErrors);
  return signs;
}

bool ErrorsStoppedIt(const Mount& mount, const Ext4Errors& errors, std::int64_t boot) {
  // The mount table hides the policy where it is the file system's own.
  return (errors.stops || errors.journalAborted ||
          HasWord(mount.superOptions, "errors=remount-ro")) &&
         errors.count > 0 && boot > 0 && errors.last >= boot;
}

std::int64_t ParseBootTime(const std::string& text) {
  const std::size_t line = text.find("btime ");
  std::int64_t boot = 0;
  if (line != std::string::npos)
    std::from_chars(text.data() + line + 6, text.data() + text.size(), boot);
  return boot;
}

std::int64_t ReadBootTime() {
  constexpr std::int64_t kNoClock = 1'000'000'000;  // a board that has none starts in 1970
  std::string text;
  ReadSmallFile(BelowRoot("/proc/stat").c_str(), std::size_t{256} << 10, text);
  const std::int64_t boot = ParseBootTime(text);
  // The kernel makes this node as it starts, and nothing changes its time.
  struct stat node = {};
  const bool tells = Stat(BelowRoot("/dev/null"), node) && node.st_mtime > kNoClock;
  return tells ? std::min<std::int64_t>(boot, node.st_mtime) : boot;
}

}  // namespace linux_platform
