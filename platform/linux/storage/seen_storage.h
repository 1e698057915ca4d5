// What the lines of fstab stood for when they were last there, and what was mounted where: the
// collector's memory "seen", which outlives restarts. It tells a disk that is lost from a stick
// that lies in a drawer. And how long it is since what a timer scrubs was scrubbed.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include <json/value.h>

namespace linux_platform {

enum class Seen { Never, Inside, Outside };

struct SeenStorage {
  static constexpr const char* kSource = "seen";

  // By the line's source, "UUID=1", or the mount point, "/data": a disk of this machine.
  std::map<std::string, bool> isInside;

  struct Scrub {
    std::int64_t days = 0;    // without one
    std::int64_t looked = 0;  // the last day that is counted, since 1970
  };
  std::map<std::string, Scrub> scrubs;  // by array, "md0", or mount point of a btrfs, "/data"

  Seen Find(const std::string& what) const;

  Json::Value ToJson() const;
  static SeenStorage FromJson(const Json::Value& document);
};

// Nothing in it when there is none, or it cannot be read.
SeenStorage ReadSeenStorage();

}  // namespace linux_platform
