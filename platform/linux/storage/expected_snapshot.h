// Volume groups that miss a disk, from what only root may read: the collector's snapshot
// "expected".
#pragma once

#include <string>
#include <vector>

#include <json/value.h>

#include "platform/linux/storage/block.h"

namespace linux_platform {

struct ExpectedSnapshot {
  static constexpr const char* kSource = "expected";

  struct Group {
    std::string name;
    Health health = Health::Abnormal;
    std::string why;  // the disks that are missing, in words
  };
  std::vector<Group> groups;  // those alone that miss a disk

  Json::Value ToJson() const;
  static ExpectedSnapshot FromJson(const Json::Value& document);
};

}  // namespace linux_platform
