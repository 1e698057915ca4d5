// The internal volumes and the system volume, and how each is.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/storage/devices.h"
#include "platform/linux/storage/filesystem.h"
#include "platform/linux/storage/missing_storage.h"
#include "platform/linux/storage/redundancy.h"

namespace linux_platform {

class Settings;

struct InternalVolume {
  std::string path, type;
  dev_t device = 0;
  int number = 0;          // as in "volume_1"
  float warningLevel = 0;  // a fraction
  std::string status;      // "normal", "degraded", "read_only" or "crashed"
  std::vector<std::string> disks;
  Capacity capacity;
  int error = 0;  // why the capacity could not be read: errno
  CrashSigns signs;
  Ext4Errors errors;
  Health beneath = Health::Normal;  // of the arrays, mappings and members that hold it
};

struct InternalVolumes {
  std::vector<InternalVolume> all;  // by path
  bool systemCrashed = false;       // the file system of "/" or "/var" has stopped working
  std::vector<InternalVolume> troubledSystem;  // those that crashed or met errors
  Health worst = Health::Normal;
  std::string hidden;  // why the first volume that may not be looked at was not, in words
};

struct ExpectedVolumes {
  const FstabTargets& targets;
  const std::vector<MissingStorage>& missing;
};

// `devices` are those of `mounts`. What is missing and is danger keeps its place and number, and
// has crashed.
InternalVolumes ReadVolumes(const Mounts& mounts, const Settings& settings,
                            const ExpectedVolumes& expected, Devices& devices,
                            const Redundancy& redundancy);

}  // namespace linux_platform
