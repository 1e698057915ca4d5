#include "host/cli/commands.h"

#include <algorithm>
#include <iostream>
#include <set>

#include "host/answer/complete_answer.h"
#include "host/answer/coverage.h"
#include "host/answer/derived_evidence.h"
#include "host/answer/explanation.h"
#include "host/answer/finding_text.h"
#include "host/answer/notes.h"
#include "host/answer/remedies.h"
#include "host/answer/sources.h"
#include "host/answer/verdict.h"
#include "host/cli/terminal.h"
#include "host/text/escape.h"
#include "host/text/quantity.h"

namespace host {
namespace {

std::string MachineLine(const Answer& answer, const Explanation& explanation, const Texts& texts) {
  std::string line = FormatCoverage(explanation, texts);
  if (!answer.hostname.empty()) line += " · " + Sanitize(answer.hostname);
  const std::string uptime = FormatUptime(answer.uptime, texts);
  if (!uptime.empty()) line += " · " + texts.FormatUi("up", uptime);
  return line;
}

using Causes = std::vector<ToldCause>;

// The first are the most telling; more than a person takes in at a glance are counted.
constexpr std::size_t kShownCauses = 3;

// Nothing is shown without what mends it, nor the other way round.
std::size_t KeepMostTelling(Causes& causes) {
  const std::size_t all = causes.size();
  causes.resize(std::min(all, kShownCauses));
  return all - causes.size();
}

void PrintWhy(const Causes& causes, std::size_t more, const Texts& texts, const Style& style) {
  const std::string label = texts.AddLabel(texts.FormatUi("why"));
  for (std::size_t i = 0; i < causes.size(); ++i) {
    ToldCause cause = causes[i];
    // One command may show several.
    if (i + 1 < causes.size() && causes[i + 1].show == cause.show) cause.show.clear();
    std::cout << style.Cause(label, cause);
  }
  const std::string text = FillPlaceholders(texts.Resolve("part:more"), {FormatCount(more)});
  if (more > 0) std::cout << style.WrapLines(4, "", text) << '\n';
}

void PrintRemedy(const Finding& finding, const Causes& causes, const Texts& texts,
                 const Style& style) {
  const std::string label = texts.AddLabel(texts.FormatUi("do"));
  std::cout << style.WrapLines(2, "", label + FindAdvice(finding, "do", texts)) << '\n';
  for (const std::string& command : ChooseCommands(finding, causes))
    std::cout << style.Command(command);
}

// What stands between a sentence and the next; not every finding's words are a sentence.
const char* EndSentence(const std::string& line) {
  if (line.ends_with("。")) return "";  // brings its own blank
  return line.ends_with('.') ? " " : " · ";
}

// The findings that lost, a line each, with their first cause. What reads like an earlier one, as
// two checks may find the same, is not told twice.
void PrintFurther(const std::vector<CheckerResult>& ranked, const Evidence& evidence,
                  const Texts& texts, const Style& style) {
  std::set<std::string> told;
  for (const CheckerResult& result : ranked) {
    const Verdict verdict = JudgeFinding(*result.finding);
    std::string line = RenderSentence(*result.finding, texts);
    const bool first = told.empty();
    if (!told.insert(line).second || first) continue;
    const Causes causes = FormatCauses(evidence, result.name, texts);
    if (!causes.empty()) line += EndSentence(line) + causes.front().lines.front();
    std::cout << style.Further(verdict, texts.FormatUi(ToString(verdict)),
                               EndLabel(texts.Resolve("common:colon")), line);
  }
}

void PrintFinding(const Finding& rule, const std::vector<CheckerResult>& checkers,
                  const Platform& platform, const Texts& texts, const Style& style) {
  const std::vector<CheckerResult> ranked = MostUrgentFirst(checkers);
  const Evidence evidence = GatherEvidence(platform, checkers);
  Causes causes = FormatCauses(evidence, ranked.empty() ? "" : ranked.front().name, texts);
  const std::size_t more = KeepMostTelling(causes);
  PrintWhy(causes, more, texts, style);
  PrintRemedy(rule, causes, texts, style);
  PrintFurther(ranked, evidence, texts, style);
}

void Print(const Explanation& explanation, const Platform& platform, const Texts& texts) {
  const Reply& reply = explanation.reply;
  const Answer answer = ParseAnswer(reply.document);
  const Style style = Style::ForStandardOutput();
  const Verdict verdict = JudgeAnswer(answer.rule, reply.sources);
  std::cout << style.Headline(verdict, texts.FormatUi(ToString(verdict)),
                              EndLabel(texts.Resolve("common:colon")),
                              FormatAnswer(answer.rule, reply.sources, texts))
            << '\n';
  if (verdict != Verdict::Well && verdict != Verdict::Unknown)
    PrintFinding(answer.rule, explanation.checkers, platform, texts, style);
  for (const ToldLine& line : FormatSourceLines(reply.sources, texts))
    std::cout << style.Source(line);
  for (const ToldLine& line : FormatNotes(platform.ReadNotes(), texts))
    std::cout << style.Note(line);
  std::cout << style.Faint(style.WrapLines(2, "", MachineLine(answer, explanation, texts))) << '\n';
}

}  // namespace

ExitStatus RunStatus(Session& session) {
  const SimulatedMachine machine = session.OpenMachine();
  const Host& host = session.GetHost();
  if (session.Options().jsonForm == kCompleteForm) {
    const CompleteAnswer complete = AskForEverything(host, machine);
    std::cout << WriteCompleteAnswer(complete, session.GetTexts()) << '\n';
    const Reply& reply = complete.explanation.reply;
    return ChooseExitStatus(ParseAnswer(reply.document).rule, reply.sources);
  }
  const HeldRequest held(host.GetPlatform());
  Explanation explanation;
  if (session.Options().json)
    explanation.reply = host.CallMethod(FindHealthMethod(host), machine);
  else
    explanation = AskExplanation(host, machine);
  const Reply& reply = explanation.reply;
  const ExitStatus status = ChooseExitStatus(ParseAnswer(reply.document).rule, reply.sources);
  if (session.Options().json)
    std::cout << reply.document << '\n';
  else
    Print(explanation, host.GetPlatform(), session.GetTexts());
  return status;
}

}  // namespace host
