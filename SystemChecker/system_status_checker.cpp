#include "SystemChecker/checkers.h"
#include "SystemChecker/power_supply_rule.h"
#include "SystemInfo/system_info_handler.h"

namespace VELA::SystemHealth {
namespace {

using enum CheckerRuleType;

struct StatusFinding {
  bool SystemStatusInfo::*holds;
  CheckerRuleType type;
  double priority;
  const char* id;
  const char* key;

  CheckerRule Rule() const { return CheckerRule(type, priority, id, "widget", key); }
};

constexpr StatusFinding kChassis[] = {
    // only the first that holds is reported
    {&SystemStatusInfo::fanFail, Warning, 0.0, "vela_system_status_warning", "fan_fail"},
    {&SystemStatusInfo::cpuFanFail, Warning, 1.0, "vela_system_status_warning", "cpu_fan_fail"},
    {&SystemStatusInfo::powerFail, Warning, 4.0, "vela_system_status_warning", "power_fail"},
};

constexpr StatusFinding kSystem[] = {
    // each stands for itself
    {&SystemStatusInfo::temperatureWarning, Warning, 6.0, "temperature_warning",
     "temperature_warning"},
    {&SystemStatusInfo::webServerFailed, Warning, 10.0, "system_web_server_warning",
     "system_web_server_failed"},
    {&SystemStatusInfo::systemCrashed, Danger, -2.2, "system_crashed_warning", "storage_is_danger"},
};

std::optional<CheckerRule> SecurityScan(const SystemStatusInfo& status) {
  if (status.securityScanStatus != "danger") return std::nullopt;
  return CheckerRule(Danger, -1.0, "securityscan_status_danger", "securityscan",
                     "securityscan_system_danger_desc");
}

std::optional<CheckerRule> PowerSupplies(const SystemStatusInfo& status) {
  if (!status.redundantPower) return std::nullopt;
  std::vector<std::string> failed;
  if (!status.powerSupplyOk[0]) failed.emplace_back("{0}1");
  if (!status.powerSupplyOk[1]) failed.emplace_back("{0}2");
  if (failed.empty()) return std::nullopt;
  return PowerSupplyRule("vela_system_status_warning", failed);
}

}  // namespace

std::optional<CheckerRule> SystemStatusChecker(const SystemInfoHandler& info) {
  const SystemStatusInfo& status = info.GetSystemStatusInfo();
  TopPriorityRule top;
  for (const StatusFinding& finding : kChassis) {
    if (!(status.*finding.holds)) continue;
    top.Push(finding.Rule());
    break;
  }
  if (auto scan = SecurityScan(status)) top.Push(*std::move(scan));
  for (const StatusFinding& finding : kSystem)
    if (status.*finding.holds) top.Push(finding.Rule());
  if (auto supplies = PowerSupplies(status)) top.Push(*std::move(supplies));
  return top.Pop();
}

}  // namespace VELA::SystemHealth
