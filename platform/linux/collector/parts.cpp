#include "platform/linux/collector/parts.h"

#include <algorithm>
#include <array>

#include "platform/linux/base/snapshot.h"
#include "platform/linux/chassis/enclosure_snapshot.h"
#include "platform/linux/chassis/fan_snapshot.h"
#include "platform/linux/chassis/ipmi_snapshot.h"
#include "platform/linux/chassis/plugged_parts.h"
#include "platform/linux/services/cluster_snapshot.h"
#include "platform/linux/services/web_server_snapshot.h"
#include "platform/linux/smart/smart_snapshot.h"
#include "platform/linux/storage/expected_snapshot.h"
#include "platform/linux/storage/mapping_snapshot.h"
#include "platform/linux/storage/md_snapshot.h"
#include "platform/linux/storage/program_mount_snapshot.h"
#include "platform/linux/storage/seen_disks.h"
#include "platform/linux/storage/seen_storage.h"
#include "platform/linux/ups/nut_configuration.h"

namespace linux_platform {

using std::chrono::seconds;

// Together they must end within the 30 s that the service is given.
constexpr std::array<Part, 14> kParts = {{
    {EnclosureSnapshot::kSource, "fans and power supplies of enclosures", seconds(22), CollectSes},
    {IpmiSnapshot::kSource, "sensors of the management controller", seconds(25), CollectIpmi},
    {FanSnapshot::kSource, "which fans of the sensor chips have turned", seconds(10), CollectFans},
    {PluggedParts::kSource, "which supplies and fans were plugged in", seconds(10), CollectPlugged,
     true},
    {MdSnapshot::kSource, "arrays: first builds, and how many members they are meant to have",
     seconds(10), CollectMd},
    {SmartSnapshot::kSource, "what smartd knows of the drives", seconds(10), CollectSmart},
    {SeenDisks::kSource, "which disks the machine has, and which are gone", seconds(10),
     CollectDisks, true},
    {MappingSnapshot::kSource, "mirrors, pools, caches and paths of the device mapper", seconds(10),
     CollectDeviceMapper},
    {SeenStorage::kSource, "which storage of fstab is a disk of this machine; days without a scrub",
     seconds(10), CollectSeenStorage, true},
    {ExpectedSnapshot::kSource, "volume groups that miss a disk", seconds(10),
     CollectExpectedStorage},
    {WebServerSnapshot::kSource, "the web server's test of its configuration", seconds(10),
     CollectWebServer},
    {ClusterSnapshot::kSource, "how the Pacemaker cluster is doing", seconds(10), CollectCluster},
    {NutConfiguration::kSource, "which UPSes NUT is configured for", seconds(5), CollectNut},
    {ProgramMountSnapshot::kSource, "capacity of file systems that are programs (NTFS)",
     seconds(10), CollectFuseblk},
}};

std::span<const Part> AllParts() { return kParts; }

const Part* FindPart(std::string_view name) {
  const auto found = std::ranges::find(kParts, name, &Part::name);
  return found == kParts.end() ? nullptr : &*found;
}

Json::Value MakeError(const std::string& why) {
  Json::Value members(Json::objectValue);
  members[kError] = why;
  return members;
}

}  // namespace linux_platform
