#include <algorithm>

#include "common/text.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/parts/storage_parts.h"

namespace linux_platform {
namespace {

using source_status::PartKind, source_status::PartState;

// LVM's own parts of a volume: their UUIDs have an ending, or their names say so.
bool IsPart(std::string_view name, std::string_view uuid) {
  constexpr std::size_t kPrefix = 4, kIds = 64;  // "LVM-", the group's and the volume's
  constexpr std::array kParts = {"_rimage_", "_rmeta_", "_mimage_", "_mlog"};
  const auto isIn = [name](const char* part) { return name.find(part) != name.npos; };
  return uuid.starts_with("LVM-") &&
         (uuid.find('-', kPrefix) != uuid.npos || uuid.size() > kPrefix + kIds ||
          std::ranges::any_of(kParts, isIn));
}

// As the collector names its kind, "thin pool"; else what made it: "LVM", "CRYPT", "mpath".
std::string NameKind(const Mapping* known, const std::string& uuid) {
  std::string kind = known != nullptr ? known->kind : uuid.substr(0, uuid.find('-'));
  std::ranges::replace(kind, '_', ' ');
  return kind;
}

// As what lies on it is judged: with all that is beneath it.
PartState JudgeMapping(const Redundancy& redundancy, const std::string& device,
                       const Mapping* known, const std::string& uuid) {
  const Stack stack = ReadStack(std::string_view(device));
  if (stack.gone && !redundancy.HasCopies(stack)) return PartState::Failed;
  const Health health = redundancy.GetHealth(stack);
  if (health != Health::Normal) return ToState(health);
  const bool unseen = known == nullptr && OnlyRootKnows(NameDevice(device), uuid);
  return unseen ? PartState::Unknown : PartState::Well;
}

void TellMapping(const StorageView& view, const Users& users, const std::string& device,
                 const TakePart& take) {
  const std::string name = NameDevice(device);
  const std::string uuid = Attribute(Sys("/block/", device, "/dm/uuid"));
  if (IsPart(name, uuid)) return;
  const auto& mappings = view.redundancy.mappings;
  const auto found = std::ranges::find(mappings, name, &Mapping::name);
  const Mapping* known = found == mappings.end() ? nullptr : &*found;
  VELAPart part =
      MakePart(PartKind::Mapping, JudgeMapping(view.redundancy, device, known, uuid), name);
  common::FillField(part.device, device);
  common::FillField(part.path, GetNode(device));
  common::FillField(part.parent, users.Find(device));
  common::FillField(part.model, NameKind(known, uuid));
  part.size = ReadDeviceSize(device);
  take(part);
}

}  // namespace

void TellMappingParts(const StorageView& view, const TakePart& take) {
  const Users users(view);
  for (const std::string& device : ListBlockDevices())
    if (device.starts_with("dm-")) TellMapping(view, users, device, take);
  for (const ExpectedSnapshot::Group& group : view.redundancy.groups) {
    VELAPart part = MakePart(PartKind::Mapping, ToState(group.health), group.name);
    common::FillField(part.model, "LVM");
    take(part);
  }
}

}  // namespace linux_platform
