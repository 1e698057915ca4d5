#include "SystemChecker/system_checker_handler.h"

#include "SystemChecker/checker_table.h"

namespace VELA::SystemHealth {

CheckerRule HealthyRule() {
  return {CheckerRuleType::Normal, 40.0, "system_health", "widget", "system_ok"};
}

CheckerRule SystemCheckerHandler::Check(const SystemInfoHandler& info) const {
  TopPriorityRule top;
  for (const Checker checker : kCheckers)
    if (std::optional<CheckerRule> finding = checker(info)) top.Push(*std::move(finding));

  // It never competes: any finding outranks it, even one of the same priority.
  return top.Pop().value_or(HealthyRule());
}

}  // namespace VELA::SystemHealth
