// How mappings are that can lose something by themselves, out of the device mapper's status lines:
// mirrors, RAID volumes, pools, caches, paths, checksums, snapshots.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/storage/block.h"

namespace linux_platform {

struct MappingStatus {
  const char* kind = "";  // "raid", "mirror", "thin_pool", ...; static
  Health health = Health::Normal;
  std::string why = {};             // empty when normal
  bool understood = true;           // else Normal, for want of better knowledge
  std::int64_t failed = 0, of = 0;  // as Mapping has them
};

// One of the devices that a mapping is put together of, as the kernel tells it.
struct MappingTarget {
  std::string type, parameters;  // "raid", "raid1 2 AA 65536/65536 idle 0 0 -"
};

// The worst of the targets. Nothing when none is of a type that has a health of its own.
// Through libdevmapper's parsers, which ask no kernel.
std::optional<MappingStatus> JudgeMapping(const std::vector<MappingTarget>& targets);

// 95 % or more.
bool IsNearlyFull(std::uint64_t used, std::uint64_t total);

// libdevmapper prints to standard error unless it is told not to.
void SilenceDeviceMapper();

}  // namespace linux_platform
