// Which arrays are being built for the first time. A new RAID 4 or 5 is built by filling its
// last member from the others, which in /sys looks like the replacement of a lost one. When
// the array was made tells the two apart, and only the array itself knows that.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/types.h>

#include <linux/major.h>
#include <linux/raid/md_u.h>

#include <cstdint>

#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/collector/snapshot_folder.h"
#include "platform/linux/storage/block.h"
#include "platform/linux/storage/filesystem.h"
#include "platform/linux/storage/md.h"
#include "platform/linux/storage/md_snapshot.h"

namespace linux_platform {
namespace {

std::int64_t BootTime() {
  std::string text;
  ReadSmallFile(BelowRoot("/proc/stat").c_str(), std::size_t{1} << 20, text);
  return ParseBootTime(text);
}

// False, too, when the array does not tell.
bool WasMadeInThisBoot(const std::string& array) {
  const std::string node = BelowRoot("/dev/") + array;
  const Descriptor device = Open(node, O_RDONLY);
  mdu_array_info_t info = {};
  if (!device || ioctl(device.Get(), GET_ARRAY_INFO, &info) != 0) return false;
  const std::int64_t boot = BootTime();
  return boot > 0 && info.ctime >= boot;
}

}  // namespace

Json::Value CollectMd() {
  const MdSnapshot before = MdSnapshot::FromJson(ReadLastSnapshot(MdSnapshot::kSource));
  MdSnapshot snapshot;
  for (const std::string& name : ListBlockDevices()) {
    if (!name.starts_with("md") || !PathExists(Sys("/block/") + name + "/md")) continue;
    snapshot.isFirstBuild[name] =
        !before.IsBuilt(name) && LooksLikeFirstBuild(ReadMdArray(name)) && WasMadeInThisBoot(name);
  }
  return snapshot.isFirstBuild.empty() ? Json::Value() : snapshot.ToJson();
}

}  // namespace linux_platform
