// One answer with its reasons: what every checker saw and found in the machine's one snapshot.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

#include "host/answer/answer.h"
#include "host/loader/host.h"

namespace host {

struct CheckerResult {
  std::string name;
  Json::Value saw;
  Json::Value rule;  // as in the document of "get"; null: nothing to report
  std::optional<Finding> finding;
};

struct Explanation {
  Reply reply;  // the document of "get", and what the sources said meanwhile
  // In the order in which the checkers run; empty when the module that explains is not
  // loaded.
  std::vector<CheckerResult> checkers;
  std::string json;  // what that module gave, document and checkers; empty like them
};

// Asks the machine once. Throws what Host::Ask throws.
Explanation AskExplanation(const Host& host, const SimulatedMachine& machine);

// Those with a finding: the most urgent first, the earlier checker's on a tie.
std::vector<CheckerResult> MostUrgentFirst(std::vector<CheckerResult> results);

}  // namespace host
