// A second module over the same collectors and checkers: the health module's document, and
// beside it what every checker saw and found in the same snapshot.
#include <algorithm>
#include <iterator>
#include <optional>

#include "SystemChecker/checker_table.h"
#include "SystemChecker/findings.h"
#include "SystemChecker/predicates.h"
#include "SystemChecker/system_checker_handler.h"
#include "module/explain/decisive.h"
#include "module/explain/inputs.h"
#include "module/health_document.h"
#include "vela_api.h"

namespace VELA::SystemHealth::Explain {
namespace {

// What one check saw and found.
struct Result {
  Json::Value saw;
  std::optional<CheckerRule> rule;
};

template <auto Checker, auto Inputs>
Result Observe(const SystemInfoHandler& info) {
  return {Inputs(info), Checker(info)};
}

// The cluster is no part of the snapshot: it is asked once for both.
Result ObserveCluster(const SystemInfoHandler&) {
  const std::optional<std::string> status = ReadClusterStatus();
  return {ClusterInputs(status), JudgeCluster(status)};
}

struct Row {
  Checker checker;
  Result (*observe)(const SystemInfoHandler& info);
};

template <auto Checker, auto Inputs>
constexpr Row kRow = {Checker, Observe<Checker, Inputs>};

constexpr Row kRows[] = {
    kRow<VolumeUsageChecker, VolumeUsageInputs>,
    kRow<ExternalVolumeChecker, ExternalVolumeInputs>,
    kRow<DiskStatusChecker, DiskStatusInputs>,
    kRow<StorageManagerOverviewChecker, StorageOverviewInputs>,
    kRow<UpsStatusChecker, UpsInputs>,
    kRow<EnclosureStatusChecker, EnclosureInputs>,
    kRow<SystemStatusChecker, SystemStatusInputs>,
    kRow<EboxStatusChecker, ExpansionUnitInputs>,
    {HAStatusChecker, ObserveCluster},
    kRow<SANStatusChecker, SanInputs>,
};

// The order decides between equal priorities: row by row, these are the health module's own.
constexpr bool MatchesTheTable() {
  return std::equal(std::begin(kRows), std::end(kRows), std::begin(kCheckers), std::end(kCheckers),
                    [](const Row& row, Checker checker) { return row.checker == checker; });
}
static_assert(MatchesTheTable(), "a checker has no row here, or they stand in another order");

// {"document": as the health module gives it, "checkers": [{"name", "saw", "rule": null when
// there is nothing to report}]}
Json::Value Explain(const SystemInfoHandler& info) {
  TopPriorityRule top;
  Json::Value answer(Json::objectValue);
  for (std::size_t i = 0; i < std::size(kRows); ++i) {
    auto [saw, rule] = kRows[i].observe(info);
    Json::Value checker;
    checker["name"] = kChecks[i].name;
    checker["rule"] = rule ? rule->ToJson() : Json::Value();
    MarkDecisive(checker["rule"], saw);
    checker["saw"] = std::move(saw);
    answer["checkers"].append(std::move(checker));
    if (rule) top.Push(*std::move(rule));
  }
  answer["document"] = HealthDocument(top.Pop().value_or(HealthyRule()));
  return answer;
}

void Get(VELA::APIRequest*, VELA::APIResponse* response) {
  const SystemInfoHandler info;
  response->SetSuccess(Explain(info));
}

constexpr VELA::APIMethodRow kTable[] = {{"VELA.Core.System.SystemHealth.Explain", 1, "get", Get},
                                         {}};

}  // namespace
}  // namespace VELA::SystemHealth::Explain

extern "C" __attribute__((visibility("default"))) const VELA::APIMethodRow* GetAPITable(void) {
  return VELA::SystemHealth::Explain::kTable;
}
