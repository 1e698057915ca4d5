#include <algorithm>
#include <array>

#include <velac.h>

#include "SystemChecker/checkers.h"
#include "SystemChecker/predicates.h"
#include "common/text.h"

namespace VELA::SystemHealth {

std::optional<std::string> ReadClusterStatus() {
  if (VELAHAIsRunning() == 0) return std::nullopt;
  char status[1024] = {};
  VELAHAGetOverviewStatusDL(status, sizeof status);
  return std::string(common::ViewText(status));
}

std::optional<CheckerRule> JudgeCluster(const std::optional<std::string>& status) {
  constexpr std::array trouble = {"danger", "warning", "empty_passive"};
  if (!status || std::ranges::find(trouble, *status) == trouble.end()) return std::nullopt;
  return CheckerRule(CheckerRuleType::Warning, 0.5, "ha_status_warning", "widget",
                     "desc_ha_abnormal");
}

// The one checker that asks the platform itself: a cluster's state is asked for only
// where a cluster runs, and at the time of the check.
std::optional<CheckerRule> HAStatusChecker(const SystemInfoHandler&) {
  return JudgeCluster(ReadClusterStatus());
}

}  // namespace VELA::SystemHealth
