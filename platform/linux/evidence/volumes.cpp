// Volumes and external volumes with little room left.
#include <cmath>

#include "common/number.h"
#include "common/text.h"
#include "platform/linux/evidence/cause.h"

namespace linux_platform {
namespace {

constexpr double kUsualMark = 0.05;

double ReadMark(const Settings& settings, const char* key) {
  return common::ToDouble(common::OrEmpty(settings.Text(key))).value_or(kUsualMark);
}

// The free share, and what it was held against. Neither is below the other for want of a total.
struct Level {
  double free = 0, mark = 0;
  bool IsLow() const { return mark > free; }
};

// Computed as whoever judges it does, to the last bit.
Level MakeLevel(std::uint64_t used, std::uint64_t total, double mark) {
  return {1.0 - static_cast<double>(used) / static_cast<double>(total), mark};
}

// In per cent: the share rounded down, its mark up, for it is below. A mark that was written as a
// float is a little beside its number.
VELAEvidence Describe(const char* key, const char* check, const std::string& part, Level level) {
  VELAEvidence record = MakeEvidence(key, check, part);
  record.figure = static_cast<std::int64_t>(std::floor(level.free * 100));
  record.mark = static_cast<std::int64_t>(std::ceil(level.mark * 100 - 1e-4));
  return record;
}

// What takes the room, the largest last.
void ShowLargest(const std::string& path, VELAEvidence& record) {
  common::FillField(record.path, path);
  SetShow(record, WriteCommand("du -xh --max-depth=2 {} | sort -h | tail", {path}));
}

void TellFullBtrfs(const InternalVolume& volume, Level level, const TakeEvidence& take) {
  VELAEvidence record = Describe("btrfs_full", kVolumeUsage, NameVolume(volume), level);
  common::FillField(record.path, volume.path);
  SetShow(record, WriteCommand("btrfs filesystem usage {}", {volume.path}));
  SetMend(record, {WriteCommand("btrfs balance start -dusage=10 {}", {volume.path})});
  take(record);
}

void TellSpace(const StorageView& view, const InternalVolume& volume, const TakeEvidence& take) {
  const Capacity& capacity = volume.capacity;
  const Level level = MakeLevel(capacity.Used(), capacity.Total(), double{volume.warningLevel});
  if (!level.IsLow()) return;
  const Mount* mount = view.mounts->FindAt(volume.path);
  if (mount != nullptr && view.devices->IsFullBtrfs(*mount))
    return TellFullBtrfs(volume, level, take);
  VELAEvidence record = Describe("volume_low", kVolumeUsage, NameVolume(volume), level);
  ShowLargest(volume.path, record);
  take(record);
}

void TellInodes(const InternalVolume& volume, double mark, const TakeEvidence& take) {
  const Capacity& capacity = volume.capacity;
  const Level level = MakeLevel(capacity.files - capacity.freeFiles, capacity.files, mark);
  if (!level.IsLow()) return;
  VELAEvidence record = Describe("inodes_low", kVolumeUsage, NameVolume(volume), level);
  common::FillField(record.path, volume.path);
  SetShow(record, WriteCommand("du -x --inodes --max-depth=2 {} | sort -n | tail", {volume.path}));
  take(record);
}

const char* GetMarkKey(DiskClass kind) {
  if (kind == DiskClass::SdCard) return "sdcard_partition_warning_percent";
  return kind == DiskClass::Esata ? "esata_partition_warning_percent"
                                  : "usb_partition_warning_percent";
}

}  // namespace

void TellVolumeEvidence(const StorageView& view, const Settings& settings,
                        const TakeEvidence& take) {
  const double mark = ReadMark(settings, "disk_inode_warning_percent");
  for (const InternalVolume& volume : view.volumes) {
    if (volume.status != "normal" || volume.error != 0) continue;
    TellSpace(view, volume, take);
    TellInodes(volume, mark, take);
  }
}

void TellExternalEvidence(const StorageView& view, const Settings& settings,
                          const TakeEvidence& take) {
  for (const ExternalVolume& volume : view.external) {
    const Level level = {
        static_cast<double>(volume.capacity.available) / static_cast<double>(volume.capacity.size),
        ReadMark(settings, GetMarkKey(volume.kind))};
    if (!volume.trouble.IsNone() || !level.IsLow()) continue;
    VELAEvidence record = Describe("volume_low", kExternalVolumes, volume.name, level);
    ShowLargest(volume.path, record);
    take(record);
  }
}

}  // namespace linux_platform
