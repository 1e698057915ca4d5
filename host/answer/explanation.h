// What every checker saw and found, from the host's own module beside the health module.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

#include "host/answer/answer.h"
#include "host/loader/host.h"

namespace host {

constexpr const char* kExplainAPI = "VELA.Core.System.SystemHealth.Explain";

struct CheckerResult {
  std::string name;
  Json::Value saw;
  Json::Value rule;  // as in the document of "get"; null: nothing to report
  std::optional<Finding> finding;
};

// In the order in which the checkers run; empty when the module is not loaded. Throws
// what Host::Ask throws.
std::vector<CheckerResult> AskExplanation(const Host& host, const SimulatedMachine& machine);

// Those with a finding: the most urgent first, the earlier checker's on a tie.
std::vector<CheckerResult> MostUrgentFirst(std::vector<CheckerResult> results);

}  // namespace host
