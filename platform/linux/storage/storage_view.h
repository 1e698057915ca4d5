// What one request sees of the internal storage: read once, asked many times.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/storage/capacity.h"
#include "platform/linux/storage/external_choice.h"
#include "platform/linux/storage/health.h"
#include "platform/linux/storage/md.h"
#include "platform/linux/storage/mounts.h"

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
};

struct WholeDisk {
  std::string device;             // kernel name
  std::string name;               // for people: "Disk 2"
  const char* status = "normal";  // or "warning", "crashed", "system_crashed"; static
  std::string usedBy;             // an array's or volume's name, "hotspare", or ""
  Health health = Health::Normal;
  bool disconnected = false;  // a remote one that lost its session
};

struct StorageView {
  std::vector<InternalVolume> volumes;
  std::vector<WholeDisk> disks;  // the internal ones
  std::vector<ExternalVolume> external;
  bool listsDisks = false;  // there is a /sys to look at
  bool systemCrashed = false;
  Health overview = Health::Normal;
  std::string failure;      // why the mount table could not be read, in words
  std::string hidden;       // the same of the first volume that nobody may look at
  std::string diskFailure;  // the same of what the collector says about mappings
};

// Reads everything. Waits for no other process, opens no device.
StorageView ReadStorage(const Settings& settings);

}  // namespace linux_platform
