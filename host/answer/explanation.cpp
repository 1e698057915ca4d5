#include "host/answer/explanation.h"

#include <json/reader.h>

#include <algorithm>
#include <memory>

namespace host {
namespace {

Json::Value Parse(const std::string& document) {
  static const Json::CharReaderBuilder builder;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value root;
  reader->parse(document.data(), document.data() + document.size(), &root, nullptr);
  return root;
}

double PriorityOf(const CheckerResult& result) {
  return result.finding ? result.finding->priority : 0;
}

}  // namespace

std::vector<CheckerResult> AskExplanation(const Host& host, const SimulatedMachine& machine) {
  const VELA::APIMethodRow* method = host.Find(kExplainAPI, 1, "get");
  if (method == nullptr) return {};
  std::vector<CheckerResult> results;
  const Json::Value document = Parse(host.AskDocument(*method, machine));
  for (const Json::Value& checker : document["checkers"]) {
    CheckerResult result{checker["name"].asString(), checker["saw"], checker["rule"], {}};
    if (!result.rule.isNull()) result.finding = FindingFrom(result.rule);
    results.push_back(std::move(result));
  }
  return results;
}

std::vector<CheckerResult> MostUrgentFirst(std::vector<CheckerResult> results) {
  std::erase_if(results, [](const CheckerResult& result) { return !result.finding; });
  std::stable_sort(
      results.begin(), results.end(),
      [](const CheckerResult& a, const CheckerResult& b) { return PriorityOf(a) < PriorityOf(b); });
  return results;
}

}  // namespace host
