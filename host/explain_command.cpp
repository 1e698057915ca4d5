#include "host/explain_command.h"

#include <iostream>

#include "host/advice.h"
#include "host/explanation.h"
#include "host/render.h"
#include "host/response.h"
#include "host/sources_line.h"
#include "host/terminal.h"
#include "host/verdict.h"

namespace vela::host {
namespace {

// {"a": 1, "b": [{"c": true}, ...]} as "a 1, b (c yes; ...)".
std::string InWords(const Json::Value& value) {
  if (value.isBool()) return value.asBool() ? "yes" : "no";
  if (value.isDouble() && !value.isIntegral()) return Number(value.asDouble());
  if (value.isString() && value.asString().empty()) return "\"\"";
  if (!value.isObject() && !value.isArray()) return Harmless(value.asString());
  if (value.empty()) return "none";
  std::string words;
  for (auto member = value.begin(); member != value.end(); ++member) {
    if (!words.empty()) words += value.isArray() ? "; " : ", ";
    const bool nested = member->isArray() && !member->empty();
    if (value.isObject()) words += member.name() + (nested ? " (" : " ");
    words += InWords(*member) + (value.isObject() && nested ? ")" : "");
  }
  return words;
}

// Single values on one line, each element of a list on its own.
void PrintSaw(const Json::Value& saw, const Style& style) {
  Json::Value single;
  for (auto member = saw.begin(); member != saw.end(); ++member) {
    if (!member->isArray() || member->empty()) single[member.name()] = *member;
  }
  if (!single.empty()) std::cout << "  " << style.Faint(InWords(single)) << '\n';
  for (auto member = saw.begin(); member != saw.end(); ++member) {
    if (!member->isArray()) continue;
    for (const Json::Value& element : *member) {
      std::cout << "  " << style.Faint(member.name() + ": " + InWords(element)) << '\n';
    }
  }
}

void PrintChecker(const CheckerResult& result, const Texts& texts, const Style& style) {
  std::cout << style.Bold(result.name) << ": ";
  if (result.finding) {
    const Verdict verdict = VerdictOf(*result.finding);
    std::cout << style.Severity(verdict, texts.Ui(NameOf(verdict))) << ", "
              << texts.Ui("priority", Number(result.finding->priority)) << ": "
              << Sentence(*result.finding, texts) << '\n';
  } else {
    std::cout << texts.Ui("nothing_found") << '\n';
  }
  PrintSaw(result.saw, style);
}

// The findings in their order, and between the first two what decided.
void PrintRanking(const std::vector<CheckerResult>& ranked, const Texts& texts,
                  const Style& style) {
  for (std::size_t i = 0; i < ranked.size(); ++i) {
    const Finding& finding = *ranked[i].finding;
    std::cout << (i + 1) << ". " << Number(finding.priority) << "  " << ranked[i].name << ": "
              << Sentence(finding, texts);
    if (i == 0) std::cout << style.Bold(" <- " + texts.Ui("most_urgent"));
    std::cout << '\n';
  }
  if (ranked.size() < 2) return;
  const double first = ranked[0].finding->priority, second = ranked[1].finding->priority;
  std::cout << "   " << ranked[0].name << ' ' << Number(first) << (first < second ? " < " : " = ")
            << ranked[1].name << ' ' << Number(second) << (first < second ? "" : ", and runs first")
            << '\n';
}

}  // namespace

ExitStatus RunExplain(Session& session) {
  const SimulatedMachine machine = session.Machine();
  const Host& host = session.GetHost();
  const Reply reply = host.Ask(HealthMethod(host), machine);
  const Finding rule = ParseAnswer(reply.document).rule;
  const std::vector<CheckerResult> results = AskExplanation(host, machine);
  if (results.empty()) {
    throw Failure(
        kUnavailable,
        "Cannot explain: VELA.Core.System.SystemHealth.Explain.so is not installed beside "
        "the health module. Build or install the whole program.");
  }
  if (session.Options().json) {
    std::cout << host.AskDocument(*host.Find(kExplainAPI, 1, "get"), machine) << std::endl;
  } else {
    const Texts& texts = session.GetTexts();
    const Style style = Style::ForStandardOutput();
    for (const CheckerResult& result : results) PrintChecker(result, texts, style);
    std::cout << '\n';
    const std::vector<CheckerResult> ranked = MostUrgentFirst(results);
    PrintRanking(ranked, texts, style);
    if (ranked.empty()) std::cout << Sentence(rule, texts) << '\n';
    for (const std::string& line : FailedSources(reply.sources, texts)) std::cout << line << '\n';
    std::cout << style.Faint(SourcesLine(reply.sources, texts)) << std::endl;
  }
  return StatusOf(VerdictOf(rule), Count(reply.sources));
}

}  // namespace vela::host
