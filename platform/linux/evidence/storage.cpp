#include <algorithm>

#include "platform/linux/evidence/cause.h"

namespace linux_platform {

void TellStorageEvidence(const StorageView& view, const TakeEvidence& take) {
  if (view.systemCrashed)
    for (const InternalVolume& volume : view.troubledSystem)
      if (volume.signs.Any()) take(DescribeFileSystem(view, volume, kSystemStatus));
  if (view.overview == Health::Normal) return;
  Causes causes;
  for (const auto add :
       {AddMissing, AddArrays, AddMappings, AddPools, AddBtrfs, AddFileSystems, AddDisks})
    add(view, causes);
  std::ranges::stable_sort(causes, std::ranges::greater(), &Cause::health);
  for (const Cause& cause : causes) take(cause.record);
}

}  // namespace linux_platform
