#include "SystemChecker/checkers.h"
#include "SystemInfo/system_info_handler.h"

namespace VELA::SystemHealth {

using enum CheckerRuleType;

std::optional<CheckerRule> UpsStatusChecker(const SystemInfoHandler& info) {
  const UpsInfo& ups = info.GetUpsStatusInfo().GetUpsInfo();
  if (!ups.upsEnabled || !ups.upsConnected) return std::nullopt;

  switch (ups.status) {
    case 2:  // on battery
      return CheckerRule(Warning, 5.0, "ups_status_abnormal", "widget", "usb_ups_status_battery");
    case 3:  // battery low
      return CheckerRule(Warning, 5.0, "ups_status_abnormal", "widget", "usb_ups_status_low_batt");
    default:
      return std::nullopt;
  }
}

}  // namespace VELA::SystemHealth
