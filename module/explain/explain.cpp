// A second module over the same collectors and checkers: the health module's document, and
// beside it what every checker saw and found in the same snapshot.
#include <algorithm>
#include <iterator>
#include <optional>

#include "SystemChecker/checker_table.h"
#include "SystemChecker/findings.h"
#include "SystemChecker/system_checker_handler.h"
#include "SystemInfo/system_info_handler.h"
#include "module/explain/decisive.h"
#include "module/explain/inputs.h"
#include "module/health_document.h"
#include "vela_api.h"

namespace VELA::SystemHealth::Explain {
namespace {

struct Row {
  Checker check;
  Json::Value (*inputs)(const SystemInfoHandler& info);
};

constexpr Row kRows[] = {
    {VolumeUsageChecker, VolumeUsageInputs},
    {ExternalVolumeChecker, ExternalVolumeInputs},
    {DiskStatusChecker, DiskStatusInputs},
    {StorageManagerOverviewChecker, StorageOverviewInputs},
    {UpsStatusChecker, UpsInputs},
    {EnclosureStatusChecker, EnclosureInputs},
    {SystemStatusChecker, SystemStatusInputs},
    {EboxStatusChecker, ExpansionUnitInputs},
    {HAStatusChecker, ClusterInputs},
    {SANStatusChecker, SanInputs},
};

// The order decides between equal priorities: row by row, these are the health module's own.
constexpr bool MatchesTheTable() {
  return std::equal(std::begin(kRows), std::end(kRows), std::begin(kCheckers), std::end(kCheckers),
                    [](const Row& row, Checker checker) { return row.check == checker; });
}
static_assert(MatchesTheTable(), "a checker has no row here, or they stand in another order");

// {"document": as the health module gives it, "checkers": [{"name", "saw", "rule": null when
// there is nothing to report}]}
Json::Value Explain(const SystemInfoHandler& info) {
  TopPriorityRule top;
  Json::Value answer(Json::objectValue);
  for (const Row& row : kRows) {
    std::optional<CheckerRule> rule = row.check(info);
    Json::Value checker;
    checker["name"] = kChecks[static_cast<std::size_t>(&row - kRows)].name;
    checker["saw"] = row.inputs(info);
    checker["rule"] = rule ? rule->ToJson() : Json::Value();
    MarkDecisive(checker["rule"], checker["saw"]);
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
