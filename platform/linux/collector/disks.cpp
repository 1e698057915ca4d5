// Which disks this machine has, and had: so that a person is told which one is gone.
#include <ctime>

#include "platform/linux/base/settings.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/storage/missing_disks.h"

namespace linux_platform {

Json::Value CollectDisks() {
  const SettingsFile settings = ReadSettings(kCurrentSettings);
  const StorageView view = ReadStorage(settings.settings);
  const auto before = SeenDisks::FromJson(ReadMemory(SeenDisks::kSource));
  const SeenDisks seen = RememberDisks(view, before, std::time(nullptr));
  return seen.disks.empty() ? Json::Value() : seen.ToJson();
}

}  // namespace linux_platform
