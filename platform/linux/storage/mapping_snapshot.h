// How the mappings are that can lose something by themselves: the collector's snapshot
// "device_mapper".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <json/value.h>

#include "platform/linux/storage/block.h"

namespace linux_platform {

struct Mapping {
  std::string name;    // below /dev/mapper: "vg0-data"
  std::string uuid;    // "LVM-..."
  std::string device;  // its number: "253:2"
  std::string kind;    // as the kernel calls it, with underscores: "raid", "thin_pool"
  Health health = Health::Normal;
  std::string why;  // in words; empty when normal
  // What deserves to be known and changes no health: so many paths failed, of so many; of a
  // snapshot 1 of 1, its content is lost. 0: nothing.
  std::int64_t failed = 0, of = 0;
};

struct MappingSnapshot {
  static constexpr const char* kSource = "device_mapper";

  std::vector<Mapping> mappings;
  std::string trouble;  // what could not be read, in words

  Json::Value ToJson() const;
  // A health of another name is Normal, for want of better knowledge.
  static MappingSnapshot FromJson(const Json::Value& document);
};

// Whether only root can ask how the mapping is: paths, mirrors, RAID volumes, pools, caches,
// snapshots, checksums, firmware RAID. By what everybody may read of it in /sys: `name` below
// /dev/mapper, `uuid`.
bool OnlyRootKnows(std::string_view name, std::string_view uuid);

// Whether it is what LVM makes in the place of a physical volume that it could not find: the kernel
// fails all that is read there. Not a part of a mirror or RAID volume, which says itself what it
// lacks.
bool IsMissingPart(std::string_view name, std::string_view uuid);

}  // namespace linux_platform
