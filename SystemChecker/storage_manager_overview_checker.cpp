#include "SystemChecker/checkers.h"
#include "SystemInfo/system_info_handler.h"

namespace VELA::SystemHealth {

using enum CheckerRuleType;

// The id of the abnormal verdict speaks of attention, its text of a warning: both are
// what clients know.
std::optional<CheckerRule> StorageManagerOverviewChecker(const SystemInfoHandler& info) {
  switch (info.GetStorageInfo().GetStorageOverviewStatus()) {
    case StorageOverviewStatus::Danger:
      return CheckerRule(Danger, -2.1, "storagemanager_overview_danger", "widget",
                         "storage_is_danger");
    case StorageOverviewStatus::Abnormal:
      return CheckerRule(Warning, 2.2, "storage_is_attention", "widget", "storage_is_warning");
    case StorageOverviewStatus::Normal:
      break;
  }
  return std::nullopt;
}

}  // namespace VELA::SystemHealth
