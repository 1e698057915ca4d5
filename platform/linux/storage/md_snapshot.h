// Which md arrays are being built for the first time, and which were made with empty places: the
// collector's snapshot "md".
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include <json/value.h>

namespace linux_platform {

struct MdSnapshot {
  static constexpr const char* kSource = "md";

  std::map<std::string, bool> isFirstBuild;  // by array: "md0"

  // Of arrays with empty places, how many devices each has ever had.
  std::map<std::string, std::int64_t> devicesEver;

  // The array was seen, and had been built.
  bool IsBuilt(const std::string& array) const;
  // The array is being built for the first time, or has appeared since the collector last
  // looked. False where the snapshot knows no array at all.
  bool MayBeFirstBuild(const std::string& array) const;

  // The array has never had more devices than so many.
  bool NeverHadMore(const std::string& array, std::int64_t devices) const;

  Json::Value ToJson() const;
  static MdSnapshot FromJson(const Json::Value& document);
};

}  // namespace linux_platform
