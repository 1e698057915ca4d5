// What one request sees of the storage: read once, asked many times.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/linux/base/trouble.h"
#include "platform/linux/storage/disks.h"
#include "platform/linux/storage/external_choice.h"
#include "platform/linux/storage/missing_storage.h"
#include "platform/linux/storage/volumes.h"
#include "platform/linux/storage/zfs.h"

namespace linux_platform {

struct StorageView {
  std::vector<InternalVolume> volumes;  // by path
  std::vector<WholeDisk> disks;         // the internal ones
  SmartCoverage smart;                  // who watches their health
  std::vector<ExternalVolume> external;
  bool listsDisks = false;  // there is a /sys to look at
  bool systemCrashed = false;
  std::vector<InternalVolume> troubledSystem;  // "/" and "/var" that crashed or met errors
  Health overview = Health::Normal;  // the worst of all internal arrays, mappings, volumes, disks
  std::vector<MissingStorage> missing;  // what is configured and not there
  std::string failure;                  // why the mount table could not be read, in words
  std::string hidden;                   // the same of the first volume that nobody may look at
  std::vector<Trouble> diskFailures;    // with what others say about arrays, mappings and pools

  // What the above was judged by, for those who say more of it: what lies beneath each mount; the
  // arrays and mappings with their health, but for `failures`, which the disks' have; the pools.
  MountTable mounts;
  std::shared_ptr<Devices> devices;
  Redundancy redundancy;
  std::vector<Zpool> pools;
};

// Reads everything. Waits for no other process, opens no device.
StorageView ReadStorage(const Settings& settings);

}  // namespace linux_platform
