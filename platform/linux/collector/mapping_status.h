// How mirrors, RAID volumes and thin pools are, out of the device mapper's status lines.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/storage/block.h"

namespace linux_platform {

struct MappingStatus {
  const char* kind = "";  // "raid", "mirror", "thin_pool"
  Health health = Health::Normal;
  std::string why;         // empty when normal
  bool understood = true;  // else Normal, for want of better knowledge
};

// `type` and `parameters` as the kernel gives them for one target. Nothing for a type that
// has no health of its own. Through libdevmapper's parsers, which ask no kernel.
std::optional<MappingStatus> JudgeMapping(std::string_view type, const std::string& parameters);

// libdevmapper prints to standard error unless it is told not to.
void SilenceDeviceMapper();

}  // namespace linux_platform
