// What a boot teaches about the fans: which ones turn. The collector keeps it in the
// snapshot "fans"; a request only reads it.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <json/value.h>

#include "platform/linux/chassis/fan_verdict.h"

namespace linux_platform {

struct FanSnapshot {
  static constexpr const char* kSource = "fans";

  std::map<std::string, FanHistory> fans;  // by libsensors' chip name and feature

  // What is known of the fan; of one that was never seen turning, nothing.
  FanHistory FindHistory(const std::string& key) const;
  // Adds the readings at the time `now`, in seconds since 1970. A fan that could not be read
  // this time keeps what is known of it, and so does one whose chip is gone.
  void Remember(const std::vector<FanReading>& readings, long long now);

  Json::Value ToJson() const;
  // Entries of any other shape count as never seen.
  static FanSnapshot FromJson(const Json::Value& document);
};

}  // namespace linux_platform
