// What only the arrays themselves know, and tell root alone.
// Which are being built for the first time: a new RAID 4 or 5 is built by filling its last member
// from the others, which in /sys looks like the replacement of a lost one. When the array was
// made tells the two apart.
// How many devices an array with empty places has ever had: one that was made with places to be
// filled later looks in /sys like one whose failed members were taken out.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/types.h>
#include <unistd.h>

#include <endian.h>

#include <linux/major.h>
#include <linux/raid/md_u.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <optional>

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

// Where a member's superblock lies, in bytes; nothing for a format that does not count devices.
std::optional<off_t> FindSuperblock(const std::string& metadata, int device) {
  if (metadata == "1.1") return 0;
  if (metadata == "1.2") return 4096;
  if (metadata != "1.0") return {};
  constexpr off_t kSector = 512;
  return (((lseek(device, 0, SEEK_END) / kSector) - 16) & ~off_t{7}) * kSector;
}

// How many numbers the array has given to its devices since it was made: a number is not taken
// back when its device goes. 0 when the member does not tell. Past the cache, which does not hear
// of what the array itself writes.
std::int64_t ReadDevicesEver(const MdMember& member, const std::string& metadata) {
  constexpr std::uint32_t kMagic = 0xA92B4EFC;
  constexpr std::size_t kCountAt = 220;
  const std::string node = BelowRoot("/dev/") + member.device;
  const Descriptor device(open(node.c_str(), O_RDONLY | O_DIRECT | O_NONBLOCK | O_CLOEXEC));
  const auto place = device ? FindSuperblock(metadata, device.Get()) : std::nullopt;
  alignas(4096) std::array<char, 4096> block = {};
  if (!place || pread(device.Get(), block.data(), block.size(), *place) <= 0) return 0;
  std::uint32_t magic = 0, count = 0;
  std::memcpy(&magic, block.data(), sizeof magic);
  std::memcpy(&count, block.data() + kCountAt, sizeof count);
  return le32toh(magic) == kMagic ? std::int64_t{le32toh(count)} : 0;
}

// What was read once stands while the places stay empty: the next look need not wake the disk.
void AddDevicesEver(const MdArray& array, const MdSnapshot& before, MdSnapshot& snapshot) {
  if (!HasEmptyPlaces(array)) return;
  const auto known = before.devicesEver.find(array.name);
  const auto member = std::ranges::find_if(
      array.members, [](const MdMember& each) { return each.Has("in_sync") && each.present; });
  if (known != before.devicesEver.end())
    snapshot.devicesEver.insert(*known);
  else if (member != array.members.end())
    snapshot.devicesEver[array.name] = ReadDevicesEver(*member, array.metadata);
}

}  // namespace

Json::Value CollectMd() {
  const MdSnapshot before = MdSnapshot::FromJson(ReadLastSnapshot(MdSnapshot::kSource));
  MdSnapshot snapshot;
  for (const std::string& name : ListBlockDevices()) {
    if (!name.starts_with("md") || !PathExists(Sys("/block/") + name + "/md")) continue;
    const MdArray array = ReadMdArray(name);
    snapshot.isFirstBuild[name] =
        !before.IsBuilt(name) && LooksLikeFirstBuild(array) && WasMadeInThisBoot(name);
    AddDevicesEver(array, before, snapshot);
  }
  return snapshot.isFirstBuild.empty() ? Json::Value() : snapshot.ToJson();
}

}  // namespace linux_platform
