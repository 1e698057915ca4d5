#include "SystemChecker/checkers.h"
#include "SystemInfo/system_info_handler.h"

namespace VELA::SystemHealth {

using enum CheckerRuleType;

std::optional<CheckerRule> DiskStatusChecker(const SystemInfoHandler& info) {
  TopPriorityRule top;
  for (const DiskStatus& disk : info.GetStorageInfo().GetDisksStatus()) {
    if (disk.status == "system_crashed")
      top.Push({Warning, 2.1, "disk_status_warning", "widget", "storage_is_warning"});
    if (disk.name != "eSATA" && disk.inUse && disk.remoteDisconnected)
      top.Push({Warning, 7.7, "disk_health_status_error", "widget", "disk_health_status_error"});
  }
  return top.Pop();
}

}  // namespace VELA::SystemHealth
