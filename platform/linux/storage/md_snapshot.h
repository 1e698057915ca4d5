// Which md arrays are being built for the first time, and how many members each is meant to have:
// the collector's snapshot "md".
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <json/value.h>

namespace linux_platform {

struct MdSnapshot {
  static constexpr const char* kSource = "md";

  std::map<std::string, bool> isFirstBuild;  // by array: "md0"

  struct Making {
    std::int64_t made = 0;   // when, in seconds since 1970
    std::int64_t meant = 0;  // so many members
  };
  std::map<std::string, Making> makings;  // by array; of those whose owner's mind is known

  // What deserves to be known and changes no health.
  struct Notes {
    std::int64_t mismatches = 0;         // sectors, as the last check counted them
    std::vector<std::string> badBlocks;  // members with some: "sda1"
  };
  std::map<std::string, Notes> notes;  // by array; of those that have some

  // The array was seen, and had been built.
  bool IsBuilt(const std::string& array) const;
  // The array is being built for the first time, or has appeared since the collector last
  // looked. False where the snapshot knows no array at all.
  bool MayBeFirstBuild(const std::string& array) const;

  // The array is meant to have no more members than so many.
  bool IsMeantToHave(const std::string& array, std::int64_t members) const;

  Json::Value ToJson() const;
  static MdSnapshot FromJson(const Json::Value& document);
};

}  // namespace linux_platform
