// How LVM's mirrors, RAID volumes and thin pools are: the collector's snapshot "device_mapper".
#pragma once

#include <string>
#include <vector>

#include <json/value.h>

#include "platform/linux/storage/block.h"

namespace linux_platform {

struct Mapping {
  std::string name;    // below /dev/mapper: "vg0-data"
  std::string uuid;    // "LVM-..."
  std::string device;  // its number: "253:2"
  std::string kind;    // "raid", "mirror" or "thin_pool"
  Health health = Health::Normal;
  std::string why;  // in words; empty when normal
};

struct MappingSnapshot {
  static constexpr const char* kSource = "device_mapper";

  std::vector<Mapping> mappings;
  std::string trouble;  // what could not be read, in words

  Json::Value ToJson() const;
  // A health of another name is Normal, for want of better knowledge.
  static MappingSnapshot FromJson(const Json::Value& document);
};

}  // namespace linux_platform
