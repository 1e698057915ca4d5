// How Pacemaker's cluster is: the collector's snapshot "cluster".
#pragma once

#include <optional>

#include <json/value.h>

#include "common/json_reader.h"
#include "platform/linux/services/ha_state.h"

namespace linux_platform {

struct ClusterSnapshot {
  static constexpr const char* kSource = "cluster";
  static constexpr const char* kState = "state";

  std::optional<HaState> state;  // none: the document tells no state that is known

  Json::Value ToJson() const {
    Json::Value members(Json::objectValue);
    if (state) members[kState] = NameHaState(*state);
    return members;
  }
  static ClusterSnapshot FromJson(const Json::Value& document) {
    return {ParseHaState(common::TextMember(document, kState))};
  }
};

}  // namespace linux_platform
