#include "platform/linux/base/sysfs.h"
#include "platform/linux/parts/storage_parts.h"

#include "common/text.h"

namespace linux_platform {

using source_status::PartKind, source_status::PartState;

VELAPart MakePart(PartKind kind, PartState state, std::string_view name) {
  VELAPart part;
  part.kind = kind;
  part.state = state;
  common::FillField(part.name, name);
  return part;
}

PartState ToState(Health health) {
  if (health == Health::Danger) return PartState::Failed;
  return health == Health::Abnormal ? PartState::Attention : PartState::Well;
}

std::string NameVolume(const InternalVolume& volume) {
  return "volume_" + std::to_string(volume.number);
}

std::string NameDevice(const std::string& device) {
  const std::string name =
      device.starts_with("dm-") ? Attribute(Sys("/block/", device, "/dm/name")) : std::string();
  return name.empty() ? device : name;
}

std::string GetNode(const std::string& device) {
  const std::string name = NameDevice(device);
  return (name == device ? "/dev/" : "/dev/mapper/") + name;
}

Users::Users(const StorageView& view) {
  for (const InternalVolume& volume : view.volumes) {
    const Mount* mount = view.mounts->FindAt(volume.path);
    if (mount == nullptr || volume.device == 0) continue;
    for (const std::string& layer : view.devices->GetStack(*mount).layers)
      volumes_.try_emplace(layer, NameVolume(volume));
  }
}

std::string Users::Find(const std::string& device) const {
  const auto found = volumes_.find(device);
  if (found != volumes_.end()) return found->second;
  const std::string holder = FindHolder(device);
  return holder.empty() ? holder : NameDevice(holder);
}

void TellStorageParts(const StorageSources& sources, const TakePart& take) {
  const StorageView& view = sources.view;
  TellDiskParts(view, Bays(sources), take);
  TellVolumeParts(view, sources.current, take);
  TellExternalParts(view, sources.current, take);
  TellArrayParts(view, take);
  TellMappingParts(view, take);
  TellLunParts(view, take);
}

}  // namespace linux_platform
