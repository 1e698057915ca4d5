// How Pacemaker's cluster is: the collector's snapshot "cluster".
#pragma once

#include <optional>

#include <json/value.h>

#include "platform/linux/services/ha_state.h"

namespace linux_platform {

struct ClusterSnapshot {
  static constexpr const char* kSource = "cluster";

  std::optional<ClusterReport> report;  // none: the document tells no state that is known

  Json::Value ToJson() const;
  static ClusterSnapshot FromJson(const Json::Value& document);
};

}  // namespace linux_platform
