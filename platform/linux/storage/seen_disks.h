// Which disks this machine had, where each sat and what it served: the collector's memory "disks",
// which outlives restarts. It tells who a disk was that is gone.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <json/value.h>

#include "platform/linux/storage/disk_identity.h"

namespace linux_platform {

struct SeenDisk {
  // What a disk was part of. "array": its UUID, else its name, and the place there, "2". "group":
  // the UUID of LVM's physical volume. "btrfs": its UUID. "pool": ZFS's name of it. "volume": the
  // mount point.
  struct Use {
    std::string kind, of, place;
    bool IsOf(const Use& other) const { return kind == other.kind && of == other.of; }
  };

  DiskIdentity identity;
  std::vector<Use> uses;
  std::int64_t gone = 0;  // when it was first not there, in seconds since 1970; 0: it is
};

struct SeenDisks {
  static constexpr const char* kSource = "disks";

  std::vector<SeenDisk> disks;

  Json::Value ToJson() const;
  static SeenDisks FromJson(const Json::Value& document);
};

}  // namespace linux_platform
