#include "host/answer/explanation.h"

#include <algorithm>
#include <utility>

#include "common/json_reader.h"
#include "common/json_writer.h"
#include "host/answer/finding_text.h"
#include "host/answer/verdict.h"

namespace host {
namespace {

constexpr const char* kExplainAPI = "VELA.Core.System.SystemHealth.Explain";

double GetPriority(const CheckerResult& result) {
  return result.finding ? result.finding->priority : 0;
}

// Adds what the module that explains cannot know: whether the sources were read.
CheckerResult ReadChecker(Json::Value& checker, const SourceReports& sources) {
  CheckerResult result;
  result.name = checker["name"].asString();
  result.rule = checker["rule"];
  if (!result.rule.isNull()) result.finding = ParseFinding(result.rule);
  result.outcome = JudgeCheck(result.name, result.finding.has_value(), sources);
  checker["outcome"] = ToString(result.outcome);
  HideUnseen(result.name, sources, checker["saw"]);
  result.saw = checker["saw"];
  return result;
}

}  // namespace

Explanation AskExplanation(const Host& host, const SimulatedMachine& machine) {
  const VELA::APIMethodRow* method = host.FindMethod(kExplainAPI, 1, "get");
  if (method == nullptr) return {host.CallMethod(FindHealthMethod(host), machine), {}, {}};

  Explanation explanation{host.CallMethod(*method, machine), {}, {}};
  Json::Value root;
  common::ParseJson(explanation.reply.document, root);
  explanation.reply.document = common::WriteCompact(root["document"]);
  for (Json::Value& checker : root["checkers"])
    explanation.checkers.push_back(ReadChecker(checker, explanation.reply.sources));
  explanation.json = common::WriteCompact(root);
  return explanation;
}

std::string FormatOutcome(const CheckerResult& result, const SourceReports& sources,
                          const Texts& texts) {
  if (result.outcome == Outcome::Nothing) return texts.FormatUi("nothing_found");
  return texts.FormatUi("outcome_" + std::string(ToString(result.outcome)),
                        JoinNames(ListUnseen(result.name, sources, texts), texts));
}

std::string FormatCoverage(const Explanation& explanation, const Texts& texts) {
  const std::vector<CheckerResult>& checkers = explanation.checkers;
  if (checkers.empty()) return FormatSourcesLine(explanation.reply.sources, texts);
  const auto made = std::ranges::count_if(checkers, [](const CheckerResult& result) {
    return result.outcome == Outcome::Finding || result.outcome == Outcome::Nothing;
  });
  return texts.FormatUi("checks_made", std::to_string(made), std::to_string(checkers.size()));
}

std::vector<CheckerResult> MostUrgentFirst(std::vector<CheckerResult> results) {
  std::erase_if(results, [](const CheckerResult& result) { return !result.finding; });
  std::stable_sort(results.begin(), results.end(),
                   [](const CheckerResult& a, const CheckerResult& b) {
                     return GetPriority(a) < GetPriority(b);
                   });
  return results;
}

std::string ExplainOrder(const std::vector<CheckerResult>& ranked, const Texts& texts) {
  if (ranked.empty()) return texts.FormatUi("no_finding");
  if (ranked.size() == 1) return texts.FormatUi("only_finding");
  const Finding &first = *ranked[0].finding, &second = *ranked[1].finding;
  if (first.priority == second.priority)
    return texts.FormatUi("tie", texts.GetText("checker", ranked[0].name),
                          texts.GetText("checker", ranked[1].name));
  const std::string kind = ToString(JudgeFinding(first)), other = ToString(JudgeFinding(second));
  return texts.FormatUi(kind + "_before_" + other, FindAdvice(first, "title", texts),
                        FindAdvice(second, "title", texts));
}

}  // namespace host
