#include "platform/linux/storage/volumes.h"

#include <algorithm>
#include <cerrno>
#include <map>

#include "platform/linux/base/root.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/storage/seen_storage.h"
#include "platform/linux/storage/volume_choice.h"
#include "platform/linux/storage/zfs.h"

namespace linux_platform {
namespace {

// A device that is gone does not tell any more whether it was a disk in its bay or a stick
// that somebody pulled out: "/volume1" was one, "/volumeUSB1" the other. Of others the collector
// may have seen it.
bool IsExpected(const std::string& target, const FstabTargets& fstab) {
  const Seen seen = target == "/" ? Seen::Inside : ReadSeenStorage().Find(target);
  if (seen != Seen::Never) return seen == Seen::Inside;
  constexpr std::string_view kVolume = "/volume";
  const bool numbered = target.starts_with(kVolume) && target.size() > kVolume.size() &&
                        isdigit(static_cast<unsigned char>(target[kVolume.size()])) != 0;
  return numbered || fstab.contains(target);
}

bool IsSystem(const Mount& mount) { return mount.target == "/" || mount.target == "/var"; }

class VolumeReader {
 public:
  VolumeReader(const Mounts& mounts, const Settings& settings, Devices& devices,
               const Redundancy& redundancy)
      : mounts_(mounts), settings_(settings), devices_(devices), redundancy_(redundancy) {}

  InternalVolumes Read(const ExpectedVolumes& expected) {
    const FstabTargets& fstab = expected.targets;
    ReadSystem();
    const bool skipRoot = settings_.Yes("volume.skip_root");
    const VolumeChoice choice = ChooseVolumes(
        mounts_, skipRoot, [&](const Mount& mount) { return IsInternal(mount, fstab); });
    if (!choice.hidden.empty()) volumes_.hidden = ExplainHidden(*choice.hidden.front());
    for (const Mount* mount : choice.reachable) {
      volumes_.worst = Worse(volumes_.worst, Judge(*mount));
      volumes_.all.push_back(Describe(*mount));
    }
    AddMissing(expected.missing, skipRoot);
    std::vector<std::string> paths;
    for (const InternalVolume& volume : volumes_.all) paths.push_back(volume.path);
    const std::vector<int> numbers = NumberVolumes(paths, fstab, settings_);
    for (std::size_t i = 0; i < numbers.size(); ++i) volumes_.all[i].number = numbers[i];
    return std::move(volumes_);
  }

 private:
  // Nobody else gets the number of what is not mounted.
  void AddMissing(const std::vector<MissingStorage>& missing, bool skipRoot) {
    for (const MissingStorage& each : missing) {
      Mount absent;
      absent.target = each.path;
      absent.type = each.type == "auto" ? "ext4" : each.type;
      const auto isIt = [&each](const InternalVolume& volume) { return volume.path == each.path; };
      if (each.health != Health::Danger || !MayBeVolume(absent, skipRoot) ||
          std::ranges::any_of(volumes_.all, isIt))
        continue;
      InternalVolume& volume = volumes_.all.emplace_back();
      volume.path = each.path;
      volume.type = each.type;
      volume.warningLevel = GetWarningLevel(settings_, each.path);
      volume.status = "crashed";
    }
    std::ranges::sort(volumes_.all, {}, &InternalVolume::path);
  }

  bool IsInternal(const Mount& mount, const FstabTargets& fstab) {
    const Stack& stack = devices_.GetStack(mount);
    if (stack.gone && stack.disks.empty()) return IsExpected(mount.target, fstab);
    return devices_.Classify(stack) == DiskClass::Internal;
  }

  Health ReadHealthBeneath(const Mount& mount) {
    const Health own = mount.type == "zfs"
                           ? ReadZpool(mount.source.substr(0, mount.source.find('/')))
                           : devices_.GetBtrfsHealth(mount);
    return Worse(own, redundancy_.GetHealth(devices_.GetStack(mount)));
  }

  struct State {
    Health beneath = Health::Normal;  // of the arrays, mappings and members that hold it
    Capacity capacity;
    int error = 0;  // why the capacity could not be read: errno
    CrashSigns signs;
    Ext4Errors errors;
    bool crashed = false;
  };

  // "/" is asked about twice, as the system volume and as a volume.
  const State& ReadState(const Mount& mount) {
    const auto [place, isNew] = states_.try_emplace(mount.id);
    State& state = place->second;
    if (!isNew) return state;
    state.beneath = ReadHealthBeneath(mount);
    if (!ReadCapacity(mount.target, mount.device, state.capacity)) state.error = errno;
    if (devices_.IsFullBtrfs(mount)) state.capacity.available = 0;
    CrashSigns& signs = state.signs = FindCrashSigns(mount);
    const Stack& stack = devices_.GetStack(mount);
    const bool isGone = stack.gone && !(redundancy_.HasCopies(stack) && !stack.disks.empty());
    signs.deviceGone = isGone || devices_.IsOffline(stack);
    signs.deviceFailed = state.beneath == Health::Danger;
    signs.unreadable = state.error == EIO;  // all that shows of an XFS that has shut down
    state.errors = ReadErrors(mount);
    if (state.errors.count > 0) {
      volumes_.worst = Worse(volumes_.worst, Health::Abnormal);
      signs.errorsStoppedIt = ErrorsStoppedIt(mount, state.errors, ReadBootTime());
    }
    state.crashed = signs.Any();
    return state;
  }

  Ext4Errors ReadErrors(const Mount& mount) {
    const Stack& stack = devices_.GetStack(mount);
    if (!mount.type.starts_with("ext") || stack.layers.empty()) return {};
    return ReadExt4Errors(stack.layers.front());
  }

  void ReadSystem() {
    for (const char* target : {"/", "/var"}) {
      const Mount* mount = mounts_.FindAt(target);
      if (mount == nullptr || MayHang(mount->type)) continue;
      if (mounts_.FindHangingParent(*mount) != nullptr) continue;
      const State& state = ReadState(*mount);
      if (state.crashed) volumes_.systemCrashed = true;
      if (state.crashed || state.errors.count > 0)
        volumes_.troubledSystem.push_back(Describe(*mount));
    }
  }

  std::string ExplainHidden(const Mount& mount) const {
    const Mount* above = mounts_.FindHangingParent(mount);
    return mount.target + " was not looked at: it lies behind " + above->target + " (" +
           above->type + "), which may hang";
  }

  // The crash of a system volume is told by itself, not by the storage overview.
  Health Judge(const Mount& mount) {
    const State& state = ReadState(mount);
    return state.crashed && !IsSystem(mount) ? Health::Danger : state.beneath;
  }

  InternalVolume Describe(const Mount& mount) {
    const State& state = ReadState(mount);
    InternalVolume volume;
    volume.path = mount.target;
    volume.type = mount.type;
    volume.device = mount.device;
    volume.warningLevel = GetWarningLevel(settings_, mount.target);
    volume.disks = devices_.GetStack(mount).disks;
    volume.capacity = state.capacity;
    volume.error = state.error;
    volume.signs = state.signs;
    volume.errors = state.errors;
    volume.beneath = state.beneath;
    volume.status = state.crashed                       ? "crashed"
                    : HasWord(mount.superOptions, "ro") ? "read_only"
                    : state.beneath == Health::Abnormal ? "degraded"
                                                        : "normal";
    return volume;
  }

  const Mounts& mounts_;
  const Settings& settings_;
  Devices& devices_;
  const Redundancy& redundancy_;
  std::map<int, State> states_;  // by mount
  InternalVolumes volumes_;
};

}  // namespace

InternalVolumes ReadVolumes(const Mounts& mounts, const Settings& settings,
                            const ExpectedVolumes& expected, Devices& devices,
                            const Redundancy& redundancy) {
  return VolumeReader(mounts, settings, devices, redundancy).Read(expected);
}

}  // namespace linux_platform
