#include "platform/linux/storage/volume_choice.h"

#include <sys/sysmacros.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <map>
#include <optional>
#include <set>
#include <tuple>

#include "platform/linux/base/settings.h"
#include "platform/linux/base/sysfs.h"
#include "vela_storage.h"

namespace linux_platform {
namespace {

constexpr std::array<std::string_view, 12> kDiskFileSystems = {"ext2",  "ext3",  "ext4", "xfs",
                                                               "btrfs", "f2fs",  "jfs",  "bcachefs",
                                                               "zfs",   "ntfs3", "vfat", "exfat"};
// With what lies below them: a firmware's partition that is never full by accident.
constexpr std::array<std::string_view, 2> kBoot = {"/boot", "/efi"};
constexpr std::array<std::string_view, 5> kProgramsOwn = {
    "/run", "/snap", "/var/lib/docker", "/var/lib/containers", "/var/lib/kubelet"};
constexpr unsigned kRamMajor = 1, kLoopMajor = 7;

bool IsBelow(std::string_view path, std::string_view folder) {
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

// What mounts of one file system have in common. btrfs gives each mount a number of its
// own, ZFS each dataset; their source tells.
std::string MakeFileSystemKey(const Mount& mount) {
  if (mount.type == "zfs") return "zfs " + mount.source.substr(0, mount.source.find('/'));
  if (mount.type == "btrfs" || major(mount.device) == 0) return mount.type + " " + mount.source;
  return std::to_string(mount.device);
}

bool IsPreferred(const Mount& a, const Mount& b) {
  if ((a.root == "/") != (b.root == "/")) return a.root == "/";
  return a.target.size() < b.target.size();
}

std::optional<int> ParseVolumeNumber(std::string_view text) {
  const auto number = ToNumber(text);
  if (!number || *number < 1 || *number > 1'000'000) return {};
  return static_cast<int>(*number);
}

std::optional<int> GetOwnNumber(std::string_view path, const Settings& settings) {
  if (const char* pinned = settings.Text("volume.id." + std::string(path)))
    if (const auto number = ParseVolumeNumber(pinned)) return number;
  constexpr std::string_view kNumbered = "/volume";
  return path.starts_with(kNumbered) ? ParseVolumeNumber(path.substr(kNumbered.size()))
                                     : std::nullopt;
}

}  // namespace

bool MayBeVolume(const Mount& mount, bool skipRoot) {
  const std::string_view target = mount.target;
  if (std::ranges::find(kDiskFileSystems, mount.type) == kDiskFileSystems.end()) return false;
  if (major(mount.device) == kLoopMajor || major(mount.device) == kRamMajor) return false;
  if (HasWord(mount.options, "ro") || (skipRoot && target == "/")) return false;
  if (target.size() >= sizeof VELA::ZRT::STORAGE_MANAGER::SpaceRecord::path) return false;
  const auto isBelow = [target](std::string_view folder) { return IsBelow(target, folder); };
  if (std::ranges::any_of(kBoot, isBelow)) return false;
  return IsBelow(target, "/run/media") || std::ranges::none_of(kProgramsOwn, isBelow);
}

VolumeChoice ChooseVolumes(const Mounts& mounts, bool skipRoot,
                           const std::function<bool(const Mount&)>& isInternal) {
  std::map<std::string, const Mount*> chosen, behind;
  for (const Mount& mount : mounts) {
    if (!MayBeVolume(mount, skipRoot) || mounts.FindAt(mount.target) != &mount) continue;
    const bool reachable = mounts.FindHangingParent(mount) == nullptr;
    if (!reachable && !IsOwnMount(mount)) continue;  // a part of one: a container's own files
    const auto place =
        (reachable ? chosen : behind).emplace(MakeFileSystemKey(mount), &mount).first;
    if (IsPreferred(mount, *place->second)) place->second = &mount;
  }
  VolumeChoice choice;
  for (const auto& [key, mount] : chosen)
    if (isInternal(*mount)) choice.reachable.push_back(mount);
  for (const auto& [key, mount] : behind)
    if (!chosen.contains(key) && isInternal(*mount)) choice.hidden.push_back(mount);
  std::ranges::sort(choice.reachable, {},
                    [](const Mount* mount) -> const std::string& { return mount->target; });
  return choice;
}

std::vector<int> NumberVolumes(const std::vector<std::string>& paths, const FstabTargets& fstab,
                               const Settings& settings) {
  std::vector<int> numbers(paths.size());
  std::set<int> taken;
  struct Unnumbered {
    std::size_t fstabLine;
    std::string_view path;
    std::size_t index;
  };
  std::vector<Unnumbered> rest;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    const auto own = GetOwnNumber(paths[i], settings);
    if (own && taken.insert(*own).second) {
      numbers[i] = *own;
    } else {
      const auto line = fstab.find(paths[i]);
      rest.push_back({line == fstab.end() ? fstab.size() : line->second, paths[i], i});
    }
  }
  std::ranges::sort(rest, {}, [](const Unnumbered& volume) {
    return std::tie(volume.fstabLine, volume.path, volume.index);
  });
  int next = 1;
  for (const Unnumbered& volume : rest) {
    while (!taken.insert(next).second) ++next;
    numbers[volume.index] = next;
  }
  return numbers;
}

float GetWarningLevel(const Settings& settings, std::string_view path) {
  constexpr float kDefault = 0.05F;
  const char* text = settings.Text("volume.warn." + std::string(path));
  if (text == nullptr) text = settings.Text("volume_warning_percent");
  if (text == nullptr) return kDefault;
  float level = 0;
  const auto [end, error] = std::from_chars(text, text + std::strlen(text), level);
  if (error != std::errc() || !(level >= 0) || level > 100) return kDefault;
  return level >= 1 ? level / 100 : level;
}

}  // namespace linux_platform
