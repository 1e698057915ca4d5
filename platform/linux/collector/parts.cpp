#include "platform/linux/collector/parts.h"

#include <algorithm>
#include <array>

namespace linux_platform {

using std::chrono::seconds;

// Together they must end within the 30 s that the service is given.
constexpr std::array<Part, 8> kParts = {{
    {"ses", "fans and power supplies of enclosures", seconds(22), CollectSes},
    {"ipmi", "sensors of the management controller", seconds(25), CollectIpmi},
    {"fans", "which fans of the sensor chips have turned", seconds(10), CollectFans},
    {"md", "arrays that are being built for the first time", seconds(10), CollectMd},
    {"device_mapper", "LVM mirrors, RAID volumes and thin pools", seconds(10), CollectDeviceMapper},
    {"web_server", "the web server's test of its configuration", seconds(10), CollectWebServer},
    {"cluster", "how the Pacemaker cluster is doing", seconds(10), CollectCluster},
    {"fuseblk", "room on file systems that are programs (NTFS)", seconds(10), CollectFuseblk},
}};

std::span<const Part> AllParts() { return kParts; }

const Part* FindPart(std::string_view name) {
  const auto found = std::ranges::find(kParts, name, &Part::name);
  return found == kParts.end() ? nullptr : &*found;
}

Json::Value Unread(const std::string& why) {
  Json::Value members(Json::objectValue);
  members["error"] = why;
  return members;
}

}  // namespace linux_platform
