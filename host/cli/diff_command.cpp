#include "host/cli/commands.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <vector>

#include "common/json_writer.h"
#include "host/answer/coverage.h"
#include "host/answer/explanation.h"
#include "host/answer/finding_text.h"
#include "host/answer/verdict.h"
#include "host/cli/terminal.h"
#include "host/text/escape.h"

namespace host {
namespace {

struct Side {
  Finding finding;
  // Only of a scenario; a saved answer has the winner alone.
  SourceReports sources;
  std::vector<CheckerResult> checkers;
};

bool IsSavedAnswer(const std::string& name) {
  std::error_code error;  // what cannot be looked at is no saved answer
  return std::filesystem::is_regular_file(name, error) &&
         std::filesystem::path(name).filename() != "state.json";
}

Side ReadSavedAnswer(const std::string& file) {
  std::ostringstream document;
  document << std::ifstream(file).rdbuf();
  try {
    return {ParseAnswer(document.str()).rule, {}, {}};
  } catch (const Failure& failure) {
    throw Failure(failure.Status(), file + ": " + failure.what());
  }
}

Side PlayScenario(Session& session, const std::string& scenario) {
  const SimulatedMachine machine = session.OpenScenario(scenario);
  const Explanation explanation = AskExplanation(session.GetHost(), machine);
  return {ParseAnswer(explanation.reply.document).rule, explanation.reply.sources,
          explanation.checkers};
}

Side OpenSide(Session& session, const std::string& name) {
  return IsSavedAnswer(name) ? ReadSavedAnswer(name) : PlayScenario(session, name);
}

std::string FormatVerdict(const Finding& finding, const SourceReports& sources, const Texts& texts,
                          const Style& style) {
  const Verdict verdict = JudgeAnswer(finding, sources);
  return style.Severity(verdict, texts.FormatUi(ToString(verdict))) +
         EndLabel(texts.Resolve("common:colon")) + FormatAnswer(finding, sources, texts);
}

// What B has and A has not, although something more urgent hides it.
void PrintHidden(const Side& a, const Side& b, const Texts& texts, const Style& style) {
  std::set<std::string> known = {RenderSentence(a.finding, texts),
                                 RenderSentence(b.finding, texts)};
  for (const CheckerResult& result : a.checkers)
    if (result.finding) known.insert(RenderSentence(*result.finding, texts));
  for (const CheckerResult& result : MostUrgentFirst(b.checkers)) {
    if (known.contains(RenderSentence(*result.finding, texts))) continue;
    std::cout << "+ " << FormatVerdict(*result.finding, {}, texts, style)
              << style.Faint(" (" + texts.FormatUi("less_urgent") + ")") << '\n';
  }
}

// The checks that B has no answer to, because it could not be had or is not wanted, and A had.
std::vector<CheckerResult> ListBlinded(const Side& a, const Side& b) {
  std::vector<CheckerResult> blinded;
  for (const CheckerResult& result : b.checkers) {
    const auto same = [&result](const CheckerResult& other) {
      return other.name == result.name && other.outcome == result.outcome;
    };
    const bool blind = result.outcome == Outcome::NotMade || result.outcome == Outcome::Accepted;
    if (blind && std::ranges::none_of(a.checkers, same)) blinded.push_back(result);
  }
  return blinded;
}

void PrintBlinded(const std::vector<CheckerResult>& blinded, const SourceReports& sources,
                  const Texts& texts) {
  for (const CheckerResult& result : blinded)
    std::cout << "? " << texts.AddColon(texts.GetText("checker", result.name)) << ' '
              << FormatOutcome(result, sources, texts) << '\n';
}

Json::Value ToJson(const Side& before, const Side& after, const Texts& texts) {
  Json::Value sides;
  sides["a"] = FormatAnswer(before.finding, before.sources, texts);
  sides["b"] = FormatAnswer(after.finding, after.sources, texts);
  sides["blinded"] = Json::arrayValue;
  for (const CheckerResult& result : ListBlinded(before, after))
    sides["blinded"].append(result.name);
  return sides;
}

}  // namespace

ExitStatus RunDiff(Session& session, const std::string& a, const std::string& b) {
  const Side before = OpenSide(session, a), after = OpenSide(session, b);
  const Texts& texts = session.GetTexts();
  const Style style = Style::ForStandardOutput();
  const std::string old = FormatVerdict(before.finding, before.sources, texts, style);
  const std::string now = FormatVerdict(after.finding, after.sources, texts, style);
  const ExitStatus status = ChooseExitStatus(after.finding, after.sources);
  if (session.Options().json) {
    Json::Value sides = ToJson(before, after, texts);
    sides["changes"] = old != now;
    std::cout << common::WriteCompact(sides) << '\n';
    return status;
  }
  if (old == now) {
    std::cout << texts.FormatUi("nothing_changes", now) << '\n';
  } else {
    std::cout << texts.FormatUi("changes") << '\n'
              << "  " << Sanitize(a) << ": " << old << '\n'
              << "  " << Sanitize(b) << ": " << now << '\n';
  }
  PrintHidden(before, after, texts, style);
  PrintBlinded(ListBlinded(before, after), after.sources, texts);
  return status;
}

}  // namespace host
