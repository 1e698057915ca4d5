#include "platform/linux/san/host_volumes.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"
#include "platform/linux/storage/filesystem.h"
#include "platform/linux/storage/md.h"

namespace linux_platform {
namespace {

// XFS that has shut down looks healthy to everything but this.
bool IsUnreadable(const std::string& target) {
  const Descriptor root = Open(target, O_PATH);
  struct stat status = {};
  return root ? fstat(root.Get(), &status) != 0 && errno == EIO : errno == EIO;
}

}  // namespace

bool HostVolumes::HasCrashed(const Mount& mount) {
  CrashSigns signs = FindCrashSigns(mount);
  const Stack& stack = devices_.GetStack(mount);
  signs.unreadable = IsUnreadable(BelowRoot(mount.target));
  signs.deviceGone = stack.gone || devices_.IsOffline(stack);
  signs.deviceFailed = devices_.GetBtrfsHealth(mount) == Health::Danger;
  for (const std::string& layer : stack.layers)
    if (layer.starts_with("md") && JudgeMd(ReadMdArray(layer), true) == Health::Danger)
      signs.deviceFailed = true;
  if (mount.type.starts_with("ext") && !stack.layers.empty()) {
    const Ext4Errors errors = ReadExt4Errors(stack.layers.front());
    signs.errorsStoppedIt = errors.count > 0 && ErrorsStoppedIt(mount, errors, ReadBootTime());
  }
  return signs.Any();
}

const HostVolume* HostVolumes::FindVolume(std::string_view path) {
  if (!path.starts_with('/')) return nullptr;
  for (;;) {
    if (const Mount* mount = mounts_->FindAt(path)) {
      const auto [place, isNew] = volumes_.try_emplace(mount->target);
      if (isNew) place->second = ReadVolume(*mount);
      return &place->second;
    }
    if (path == "/") return nullptr;
    path = path.substr(0, path.rfind('/'));
    if (path.empty()) path = "/";
  }
}

bool HostVolumes::IsLost(dev_t device) {
  const Stack stack = ReadStack(device);
  return stack.gone || devices_.IsOffline(stack);
}

HostVolume HostVolumes::ReadVolume(const Mount& mount) {
  HostVolume volume;
  volume.path = mount.target;
  volume.mayHang = MayHang(mount.type) || mounts_->FindHangingParent(mount) != nullptr;
  if (volume.mayHang) return volume;
  volume.isCrashed = HasCrashed(mount);
  ReadCapacity(BelowRoot(mount.target), mount.device, volume.capacity);
  return volume;
}

}  // namespace linux_platform
