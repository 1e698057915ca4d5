// Which arrays are being built for the first time. A new RAID 4 or 5 is built by filling its
// last member from the others, which in /sys looks like the replacement of a lost one. When
// the array was made tells the two apart, and only the array itself knows that.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/types.h>

#include <linux/major.h>
#include <linux/raid/md_u.h>

#include <cstdint>

#include "common/json_reader.h"
#include "platform/linux/base/descriptor.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/collector/snapshot_folder.h"
#include "platform/linux/storage/block.h"
#include "platform/linux/storage/filesystem.h"
#include "platform/linux/storage/md.h"

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
  const Descriptor device(open(node.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  mdu_array_info_t info = {};
  if (!device || ioctl(device.Get(), GET_ARRAY_INFO, &info) != 0) return false;
  const std::int64_t boot = BootTime();
  return boot > 0 && info.ctime >= boot;
}

}  // namespace

Json::Value CollectMd() {
  const Json::Value before = LastSnapshot("md");
  Json::Value arrays(Json::objectValue);
  for (const std::string& name : ListBlockDevices()) {
    if (!name.starts_with("md") || !PathExists(Sys("/block/") + name + "/md")) continue;
    const bool first = GetBuildState(before, name) != Build::Done &&
                       LooksLikeFirstBuild(ReadMdArray(name)) && WasMadeInThisBoot(name);
    arrays[name] = first ? "first build" : "built";
  }
  Json::Value members;
  if (!arrays.empty()) members["arrays"] = std::move(arrays);
  return members;
}

}  // namespace linux_platform
