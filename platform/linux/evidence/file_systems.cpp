// File systems that have stopped working, or have met errors.
#include <algorithm>

#include "common/text.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/evidence/cause.h"

namespace linux_platform {
namespace {

// What holds the file system: "/dev/mapper/vg0-data"; of what has failed beneath it the array or
// mapping, by name. "" when nothing is mounted there.
std::string FindHolding(const StorageView& view, const InternalVolume& volume) {
  const Mount* mount = view.mounts->FindAt(volume.path);
  if (mount == nullptr) return {};
  if (volume.signs.deviceFailed)
    for (const std::string& layer : view.devices->GetStack(*mount).layers) {
      const auto known = view.redundancy.health.find(layer);
      if (known != view.redundancy.health.end() && known->second == Health::Danger)
        return NameDevice(layer);
    }
  return mount->source;
}

const char* ChooseKey(const InternalVolume& volume) {
  const CrashSigns& signs = volume.signs;
  if (signs.deviceGone) return "volume_device_gone";
  if (signs.deviceFailed) return "volume_device_failed";
  if (signs.unreadable) return "file_system_down";
  return signs.Any() ? "file_system_read_only" : "file_system_errors";
}

// None changes what it finds without asking.
const char* ChooseRepair(std::string_view type) {
  if (type == "btrfs") return "btrfs check --readonly {}";
  return type.starts_with("ext") ? "e2fsck -f {}" : "fsck {}";
}

// The root can be looked at only while another system runs.
void AddCommands(const InternalVolume& volume, const std::string& source, VELAEvidence& record) {
  SetShow(record, source.starts_with("md") ? WriteCommand("mdadm --detail {}", {"/dev/" + source})
                                           : "journalctl -k -b -p err");
  const std::string unmount = WriteCommand("umount {}", {volume.path});
  const std::string mount = WriteCommand("mount {}", {volume.path});
  if (volume.path == "/" || source.empty()) return;
  // XFS repairs itself when it is mounted anew: until it has, xfs_repair refuses.
  if (volume.signs.deviceGone || volume.signs.deviceFailed || volume.type == "xfs")
    SetMend(record, {unmount, mount});
  else
    SetMend(record, {unmount, WriteCommand(ChooseRepair(volume.type), {source}), mount});
}

// The first one that ext4 counted, of the device that holds the file system.
std::int64_t ReadFirstError(const StorageView& view, const InternalVolume& volume) {
  const Mount* mount = view.mounts->FindAt(volume.path);
  if (mount == nullptr || volume.errors.count == 0) return 0;
  const Stack& stack = view.devices->GetStack(*mount);
  if (stack.layers.empty()) return 0;
  const std::string folder = Sys("/fs/ext4/", stack.layers.front());
  return NumberAttribute(Within(folder, "first_error_time")).value_or(0);
}

void Add(const StorageView& view, const InternalVolume& volume, Causes& causes) {
  // What lies beneath and has failed is told by itself; so is the crash of a system volume.
  const bool isSystem = volume.path == "/" || volume.path == "/var";
  const bool crashed = volume.signs.Any() && !volume.signs.deviceFailed && !isSystem;
  if (crashed || volume.errors.count > 0)
    causes.push_back(
        {crashed ? Health::Danger : Health::Abnormal, DescribeFileSystem(view, volume, kOverview)});
}

}  // namespace

VELAEvidence DescribeFileSystem(const StorageView& view, const InternalVolume& volume,
                                const char* check) {
  const std::string source = FindHolding(view, volume);
  const std::string name = volume.number != 0 ? NameVolume(volume) : volume.path;
  VELAEvidence record = MakeEvidence(ChooseKey(volume), check, name);
  common::FillField(record.words, source);
  common::FillField(record.path, volume.path);
  record.figure = volume.errors.count;
  record.since = ReadFirstError(view, volume);
  AddCommands(volume, source, record);
  return record;
}

void AddFileSystems(const StorageView& view, Causes& causes) {
  for (const InternalVolume& volume : view.volumes) Add(view, volume, causes);
  // Where the root is no volume, its errors still count.
  for (const InternalVolume& volume : view.troubledSystem)
    if (volume.errors.count > 0 &&
        std::ranges::find(view.volumes, volume.path, &InternalVolume::path) == view.volumes.end())
      Add(view, volume, causes);
}

}  // namespace linux_platform
