#include "host/answer/explanation.h"

#include <algorithm>
#include <utility>

#include "common/json_reader.h"
#include "common/json_writer.h"

namespace host {
namespace {

constexpr const char* kExplainAPI = "VELA.Core.System.SystemHealth.Explain";

double GetPriority(const CheckerResult& result) {
  return result.finding ? result.finding->priority : 0;
}

}  // namespace

Explanation AskExplanation(const Host& host, const SimulatedMachine& machine) {
  const VELA::APIMethodRow* method = host.FindMethod(kExplainAPI, 1, "get");
  if (method == nullptr) return {host.CallMethod(FindHealthMethod(host), machine), {}, {}};

  Explanation explanation{host.CallMethod(*method, machine), {}, {}};
  explanation.json = std::move(explanation.reply.document);
  Json::Value root;
  common::ParseJson(explanation.json, root);
  explanation.reply.document = common::WriteCompact(root["document"]);
  for (const Json::Value& checker : root["checkers"]) {
    CheckerResult result{checker["name"].asString(), checker["saw"], checker["rule"], {}};
    if (!result.rule.isNull()) result.finding = ParseFinding(result.rule);
    explanation.checkers.push_back(std::move(result));
  }
  return explanation;
}

std::vector<CheckerResult> MostUrgentFirst(std::vector<CheckerResult> results) {
  std::erase_if(results, [](const CheckerResult& result) { return !result.finding; });
  std::stable_sort(results.begin(), results.end(),
                   [](const CheckerResult& a, const CheckerResult& b) {
                     return GetPriority(a) < GetPriority(b);
                   });
  return results;
}

}  // namespace host
