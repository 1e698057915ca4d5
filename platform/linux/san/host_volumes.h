// The file systems that hold LUNs' files, each read once.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "platform/linux/storage/devices.h"
#include "platform/linux/storage/filesystem.h"
#include "platform/linux/storage/mounts.h"

namespace linux_platform {

struct HostVolume {
  std::string path;  // its mount point
  // A network's or a program's file system, or one behind such: it may hang and is not read.
  bool mayHang = false;
  bool isCrashed = false;
  Capacity capacity;     // zero when it is not known
  bool IsFull() const {  // a tenth or less is free
    return capacity.Total() > 0 && capacity.available <= capacity.Total() / 10;
  }
};

class HostVolumes {
 public:
  explicit HostVolumes(MountTable mounts) : mounts_(std::move(mounts)), devices_(*mounts_, {}) {}
  HostVolumes(const HostVolumes&) = delete;
  HostVolumes& operator=(const HostVolumes&) = delete;

  // The volume that the absolute `path` lies in; null when none does. Symbolic links are not
  // followed, as that could hang.
  const HostVolume* FindVolume(std::string_view path);
  // All that were found, by path.
  const std::map<std::string, HostVolume>& GetVolumes() const { return volumes_; }

  // Whether the device, on which a LUN lies without a volume, is gone or offline.
  bool IsLost(dev_t device);

 private:
  HostVolume ReadVolume(const Mount& mount);
  bool HasCrashed(const Mount& mount);

  MountTable mounts_;
  Devices devices_;
  std::map<std::string, HostVolume> volumes_;
};

}  // namespace linux_platform
