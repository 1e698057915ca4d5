#include <algorithm>

#include "common/text.h"
#include "platform/linux/parts/storage_parts.h"
#include "platform/linux/san/luns.h"

namespace linux_platform {
namespace {

using source_status::PartKind, source_status::PartState;

PartState JudgeLun(const JudgedLun& judged) {
  if (judged.status == LunStatus::LowSpace) return PartState::Attention;
  if (judged.status != LunStatus::Normal) return PartState::Failed;
  return judged.isSeen ? PartState::Well : PartState::Unknown;
}

// The volume that is mounted at the path; "" where it is none of ours.
std::string FindVolumeName(const StorageView& view, const std::string& path) {
  const auto found = std::ranges::find(view.volumes, path, &InternalVolume::path);
  if (found != view.volumes.end()) return NameVolume(*found);
  const auto external = std::ranges::find(view.external, path, &ExternalVolume::path);
  return external != view.external.end() ? external->name : "";
}

}  // namespace

void TellLunParts(const StorageView& view, const TakePart& take) {
  HostVolumes volumes(view.mounts);
  std::string trouble;  // is the SAN tool's to tell
  for (const JudgedLun& judged : ReadLuns(volumes, trouble)) {
    VELAPart part = MakePart(PartKind::Lun, JudgeLun(judged), judged.lun.name);
    common::FillField(part.device, judged.lun.object);
    common::FillField(part.path, judged.lun.backing);
    common::FillField(part.parent, FindVolumeName(view, judged.location));
    part.size = static_cast<std::uint64_t>(std::max<std::int64_t>(judged.lun.size, 0));
    take(part);
  }
}

}  // namespace linux_platform
