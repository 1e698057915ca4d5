#include <boost/algorithm/string/join.hpp>

#include "SystemChecker/checkers.h"
#include "SystemChecker/power_supply_rule.h"
#include "SystemInfo/system_info_handler.h"

namespace VELA::SystemHealth {
namespace {

using enum CheckerRuleType;
using Units = std::vector<EboxStatusInfo::EboxStatus>;

std::optional<CheckerRule> FailedFans(const Units& units) {
  std::vector<std::string> failed;
  for (const auto& unit : units)
    if (unit.fanFail) failed.push_back(unit.name);
  if (failed.empty()) return std::nullopt;
  return CheckerRule(
      Warning, 2.0, "ebox_status_warning",
      Description::AdditionalDescription(boost::algorithm::join(failed, ", ") + "{0} {1}",
                                         {{"common", "colon"}, {"widget", "eunit_fan_fail"}}));
}

std::optional<CheckerRule> FailedSupplies(const Units& units) {
  std::vector<std::string> failed;
  for (const auto& unit : units) {
    if (!unit.powerSupplyOk[0]) failed.push_back(unit.name + "{0}1");
    if (!unit.powerSupplyOk[1]) failed.push_back(unit.name + "{0}2");
  }
  if (failed.empty()) return std::nullopt;
  return PowerSupplyRule("ebox_status_warning", failed);
}

}  // namespace

std::optional<CheckerRule> EboxStatusChecker(const SystemInfoHandler& info) {
  const Units& units = info.GetEboxStatusInfo().GetEboxes();
  TopPriorityRule top;
  if (auto fans = FailedFans(units)) top.Push(*std::move(fans));
  if (auto supplies = FailedSupplies(units)) top.Push(*std::move(supplies));
  return top.Pop();
}

}  // namespace VELA::SystemHealth
