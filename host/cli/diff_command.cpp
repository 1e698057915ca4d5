#include "host/cli/diff_command.h"

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

namespace host {
namespace {

struct Side {
  Finding rule;
  SourceCount sources;
  std::vector<Finding> others;  // only of a scenario; a saved answer has the winner alone
};

bool IsSavedAnswer(const std::string& name) {
  return std::filesystem::is_regular_file(name) &&
         std::filesystem::path(name).filename() != "state.json";
}

Side Saved(const std::string& file) {
  std::ostringstream document;
  document << std::ifstream(file).rdbuf();
  try {
    return {ParseAnswer(document.str()).rule, {}, {}};
  } catch (const Failure& failure) {
    throw Failure(failure.Status(), file + ": " + failure.what());
  }
}

Side Ask(Session& session, const std::string& scenario) {
  const SimulatedMachine machine = session.OpenScenario(scenario);
  const Explanation explanation = AskExplanation(session.GetHost(), machine);
  const Reply& reply = explanation.reply;
  Side side{ParseAnswer(reply.document).rule, CountSources(reply.sources), {}};
  const auto ranked = MostUrgentFirst(explanation.checkers);
  for (std::size_t i = 1; i < ranked.size(); ++i) side.others.push_back(*ranked[i].finding);
  return side;
}

Side SideOf(Session& session, const std::string& name) {
  return IsSavedAnswer(name) ? Saved(name) : Ask(session, name);
}

std::string Line(const Finding& finding, const Texts& texts, const Style& style) {
  const Verdict verdict = JudgeFinding(finding);
  return style.Severity(verdict, texts.FormatUi(ToString(verdict))) +
         texts.Resolve("common:colon") + " " + RenderSentence(finding, texts);
}

// What B has and A has not, although something more urgent hides it.
void PrintHidden(const Side& a, const Side& b, const Texts& texts, const Style& style) {
  std::set<std::string> known = {RenderSentence(a.rule, texts)};
  for (const Finding& other : a.others) known.insert(RenderSentence(other, texts));
  for (const Finding& other : b.others) {
    if (known.contains(RenderSentence(other, texts))) continue;
    std::cout << "+ " << Line(other, texts, style)
              << style.Faint(" (" + texts.FormatUi("less_urgent") + ")") << '\n';
  }
}

}  // namespace

ExitStatus RunDiff(Session& session, const std::string& a, const std::string& b) {
  const Side before = SideOf(session, a), after = SideOf(session, b);
  const Texts& texts = session.GetTexts();
  const Style style = Style::ForStandardOutput();
  const std::string old = Line(before.rule, texts, style), now = Line(after.rule, texts, style);
  if (session.Options().json) {
    Json::Value sides;
    sides["changes"] = old != now;
    sides["a"] = RenderSentence(before.rule, texts);
    sides["b"] = RenderSentence(after.rule, texts);
    std::cout << common::WriteCompact(sides) << std::endl;
  } else if (old == now) {
    std::cout << texts.FormatUi("nothing_changes", now) << '\n';
    PrintHidden(before, after, texts, style);
  } else {
    std::cout << texts.FormatUi("changes") << '\n'
              << "  " << a << ": " << old << '\n'
              << "  " << b << ": " << now << '\n';
    PrintHidden(before, after, texts, style);
  }
  std::cout.flush();
  return ChooseExitStatus(JudgeFinding(after.rule), after.sources);
}

}  // namespace host
