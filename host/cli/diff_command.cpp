#include "host/cli/commands.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <vector>

#include "common/json_writer.h"
#include "host/answer/explanation.h"
#include "host/answer/finding_text.h"
#include "host/answer/verdict.h"
#include "host/cli/terminal.h"
#include "host/text/escape.h"

namespace host {
namespace {

struct Side {
  Finding finding;
  ExitStatus status;
  std::vector<Finding> others;  // only of a scenario; a saved answer has the winner alone
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
    const Finding finding = ParseAnswer(document.str()).rule;
    return {finding, ChooseExitStatus(finding, {}), {}};
  } catch (const Failure& failure) {
    throw Failure(failure.Status(), file + ": " + failure.what());
  }
}

Side PlayScenario(Session& session, const std::string& scenario) {
  const SimulatedMachine machine = session.OpenScenario(scenario);
  const Explanation explanation = AskExplanation(session.GetHost(), machine);
  const Finding finding = ParseAnswer(explanation.reply.document).rule;
  Side side{finding, ChooseExitStatus(finding, explanation.reply.sources), {}};
  const auto ranked = MostUrgentFirst(explanation.checkers);
  for (std::size_t i = 1; i < ranked.size(); ++i) side.others.push_back(*ranked[i].finding);
  return side;
}

Side OpenSide(Session& session, const std::string& name) {
  return IsSavedAnswer(name) ? ReadSavedAnswer(name) : PlayScenario(session, name);
}

std::string FormatVerdict(const Finding& finding, const Texts& texts, const Style& style) {
  const Verdict verdict = JudgeFinding(finding);
  return style.Severity(verdict, texts.FormatUi(ToString(verdict))) +
         texts.Resolve("common:colon") + " " + RenderSentence(finding, texts);
}

// What B has and A has not, although something more urgent hides it.
void PrintHidden(const Side& a, const Side& b, const Texts& texts, const Style& style) {
  std::set<std::string> known = {RenderSentence(a.finding, texts)};
  for (const Finding& other : a.others) known.insert(RenderSentence(other, texts));
  for (const Finding& other : b.others) {
    if (known.contains(RenderSentence(other, texts))) continue;
    std::cout << "+ " << FormatVerdict(other, texts, style)
              << style.Faint(" (" + texts.FormatUi("less_urgent") + ")") << '\n';
  }
}

}  // namespace

ExitStatus RunDiff(Session& session, const std::string& a, const std::string& b) {
  const Side before = OpenSide(session, a), after = OpenSide(session, b);
  const Texts& texts = session.GetTexts();
  const Style style = Style::ForStandardOutput();
  const std::string old = FormatVerdict(before.finding, texts, style);
  const std::string now = FormatVerdict(after.finding, texts, style);
  if (session.Options().json) {
    Json::Value sides;
    sides["changes"] = old != now;
    sides["a"] = RenderSentence(before.finding, texts);
    sides["b"] = RenderSentence(after.finding, texts);
    std::cout << common::WriteCompact(sides) << '\n';
    return after.status;
  }
  if (old == now) {
    std::cout << texts.FormatUi("nothing_changes", now) << '\n';
  } else {
    std::cout << texts.FormatUi("changes") << '\n'
              << "  " << Sanitize(a) << ": " << old << '\n'
              << "  " << Sanitize(b) << ": " << now << '\n';
  }
  PrintHidden(before, after, texts, style);
  return after.status;
}

}  // namespace host
