// What a boot teaches about the fans: which ones turn. The collector keeps it in the
// snapshot "fans"; a request only looks.
#pragma once

#include <string>
#include <vector>

#include <json/value.h>

#include "platform/linux/chassis/fan_verdict.h"

namespace linux_platform {

// The next member "fans" of the snapshot, made of the one before (null or of any shape:
// nothing is known yet) and of the readings at the time `now`, in seconds since 1970. A
// fan that could not be read this time keeps what is known of it.
Json::Value RememberFans(const Json::Value& before, const std::vector<FanReading>& fans,
                         long long now);

// What the member "fans" knows of the fan.
FanHistory HistoryOf(const Json::Value& fans, const std::string& key);

}  // namespace linux_platform
