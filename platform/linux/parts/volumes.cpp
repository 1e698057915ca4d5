#include <algorithm>

#include "common/number.h"
#include "common/text.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/parts/storage_parts.h"
#include "platform/linux/storage/program_mount_snapshot.h"

namespace linux_platform {
namespace {

using source_status::PartKind, source_status::PartState;

constexpr double kUsualMark = 0.05;

double ReadMark(const Settings& settings, const char* key) {
  return common::ToDouble(common::OrEmpty(settings.Text(key))).value_or(kUsualMark);
}

bool IsBelow(std::uint64_t free, std::uint64_t all, double mark) {
  return all > 0 && static_cast<double>(free) / static_cast<double>(all) < mark;
}

PartState JudgeVolume(const StorageView& view, const InternalVolume& volume, double inodeMark) {
  const auto isIt = [&volume](const MissingStorage& each) { return each.path == volume.path; };
  if (volume.status == "crashed")
    return volume.device == 0 && std::ranges::any_of(view.missing, isIt) ? PartState::Missing
                                                                         : PartState::Failed;
  if (volume.status != "normal") return PartState::Attention;
  if (volume.error != 0) return PartState::Unknown;
  const Capacity& capacity = volume.capacity;
  return IsBelow(capacity.available, capacity.Total(), volume.warningLevel) ||
                 IsBelow(capacity.freeFiles, capacity.files, inodeMark)
             ? PartState::Attention
             : PartState::Well;
}

// What is mounted there, by its uppermost device or, without one, by its own name: "tank/data".
void FillMount(const StorageView& view, const std::string& path, VELAPart& part) {
  common::FillField(part.mountPoint, path);
  const Mount* mount = view.mounts->FindAt(path);
  if (mount == nullptr) return;
  const Stack& stack = view.devices->GetStack(*mount);
  if (stack.layers.empty()) return common::FillField(part.device, mount->source);
  common::FillField(part.device, stack.layers.front());
  common::FillField(part.path, GetNode(stack.layers.front()));
}

// What is configured, of no weight to be a volume, and not there.
void TellMissingVolumes(const StorageView& view, const TakePart& take) {
  for (const MissingStorage& missing : view.missing) {
    if (missing.path.empty() || missing.health == Health::Normal) continue;
    if (std::ranges::find(view.volumes, missing.path, &InternalVolume::path) != view.volumes.end())
      continue;
    VELAPart part = MakePart(PartKind::Volume, PartState::Missing, missing.path);
    common::FillField(part.mountPoint, missing.path);
    common::FillField(part.model, missing.type);
    take(part);
  }
}

const char* GetMarkKey(const ExternalVolume& volume) {
  if (volume.kind == DiskClass::SdCard) return "sdcard_partition_warning_percent";
  return volume.kind == DiskClass::Esata ? "esata_partition_warning_percent"
                                         : "usb_partition_warning_percent";
}

// False where nobody knows it; `free` is what a user can still write.
bool Measure(const ExternalVolume& volume, std::uint64_t& free, std::uint64_t& total) {
  if (volume.isProgram) {
    ProgramMountSnapshot snapshot;
    std::string reason;
    ReadSnapshot(snapshot, reason);
    const ProgramMount* mount = snapshot.FindMount(volume.path);
    if (mount != nullptr) std::tie(free, total) = std::tie(mount->free, mount->total);
    return mount != nullptr;
  }
  Capacity capacity;
  if (!ReadCapacity(volume.path, volume.device, capacity)) return false;
  free = capacity.available;
  total = capacity.size;
  return true;
}

}  // namespace

void TellVolumeParts(const StorageView& view, const Settings& settings, const TakePart& take) {
  const double inodeMark = ReadMark(settings, "disk_inode_warning_percent");
  for (const InternalVolume& volume : view.volumes) {
    VELAPart part =
        MakePart(PartKind::Volume, JudgeVolume(view, volume, inodeMark), NameVolume(volume));
    FillMount(view, volume.path, part);
    common::FillField(part.model, volume.type);
    part.used = volume.capacity.Used();
    part.total = volume.capacity.Total();
    take(part);
  }
  TellMissingVolumes(view, take);
}

void TellExternalParts(const StorageView& view, const Settings& settings, const TakePart& take) {
  for (const ExternalVolume& volume : view.external) {
    std::uint64_t free = 0, total = 0;
    const bool measured = Measure(volume, free, total);
    const bool low = measured && IsBelow(free, total, ReadMark(settings, GetMarkKey(volume)));
    VELAPart part = MakePart(PartKind::Volume,
                             low        ? PartState::Attention
                             : measured ? PartState::Well
                                        : PartState::Unknown,
                             volume.name);
    FillMount(view, volume.path, part);
    const Mount* mount = view.mounts->FindAt(volume.path);
    const std::string& device = view.devices->GetStack(*mount).disks.front();
    const DiskIdentity disk = ReadDiskIdentity(device, view.devices->GetFacts(device).path);
    common::FillField(part.port, disk.port);
    common::FillField(part.model, disk.model);
    common::FillField(part.serial, disk.serial);
    part.size = disk.size;
    part.used = total - std::min(free, total);
    part.total = total;
    take(part);
  }
}

}  // namespace linux_platform
