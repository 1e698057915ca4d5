// One answer with its reasons: what every checker saw and found in the machine's one snapshot.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

#include "host/answer/answer.h"
#include "host/answer/coverage.h"
#include "host/loader/host.h"

namespace host {

struct CheckerResult {
  std::string name;
  Outcome outcome = Outcome::Nothing;
  Json::Value saw;   // null in the place of what may be no more than a default value
  Json::Value rule;  // as in the document of "get"; null: nothing to report
  std::optional<Finding> finding;
};

struct Explanation {
  Reply reply;  // the document of "get", and what the sources said meanwhile
  // In the order in which the checkers run; empty when the module that explains is not
  // loaded.
  std::vector<CheckerResult> checkers;
  // {"document": of "get", "checkers": [{"name", "outcome", "saw", "rule"}]}; empty like them.
  std::string json;
};

// Asks the machine once. Throws what Host::Ask throws.
Explanation AskExplanation(const Host& host, const SimulatedMachine& machine);

// What became of a check without a finding: "nothing to report", or what it would have needed.
std::string FormatOutcome(const CheckerResult& result, const SourceReports& sources,
                          const Texts& texts);

// "9 of 10 checks made"; where the module that explains is not loaded, how many sources were read.
std::string FormatCoverage(const Explanation& explanation, const Texts& texts);

// Those with a finding: the most urgent first, the earlier checker's on a tie.
std::vector<CheckerResult> MostUrgentFirst(std::vector<CheckerResult> results);

// Why the first of the findings comes before the second, the most urgent first: "Danger comes
// before warnings: ...".
std::string ExplainOrder(const std::vector<CheckerResult>& ranked, const Texts& texts);

}  // namespace host
