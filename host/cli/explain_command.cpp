#include "host/cli/commands.h"

#include <iostream>

#include "host/answer/complete_answer.h"
#include "host/answer/coverage.h"
#include "host/answer/finding_text.h"
#include "host/answer/input_lines.h"
#include "host/answer/notes.h"
#include "host/answer/sources.h"
#include "host/answer/verdict.h"
#include "host/cli/terminal.h"

namespace host {
namespace {

void PrintCauses(const Evidence& evidence, const CheckerResult& result, const Texts& texts,
                 const Style& style) {
  if (!result.finding) return;
  for (const ToldCause& cause : FormatCauses(evidence, result.name, texts))
    std::cout << style.Cause(texts.AddLabel(texts.FormatUi("why")), cause);
}

// What stands behind a finding in parentheses, with the blank before it where there is one.
std::string Remark(const std::string& words, const Texts& texts) {
  return texts.FormatUi("remark", words);
}

std::string FormatChecker(const CheckerResult& result, const SourceReports& sources,
                          const Texts& texts, const Style& style) {
  const std::string name = texts.AddLabel(texts.GetText("checker", result.name));
  if (!result.finding) {
    const bool made = result.outcome == Outcome::Nothing;
    return style.Severity(made ? Verdict::Well : Verdict::Unknown, name) +
           FormatOutcome(result, sources, texts);
  }
  const Verdict verdict = JudgeFinding(*result.finding);
  return style.Severity(verdict, name) + style.Bold(RenderSentence(*result.finding, texts)) +
         style.Faint(Remark(texts.FormatUi(ToString(verdict)), texts));
}

void PrintInputs(const CheckerResult& result, const Parts& parts, const Texts& texts,
                 const Style& style) {
  for (const InputLine& line : FormatInputs(result, parts, texts))
    std::cout << (line.decides ? style.Bold(style.WrapLines(2, "▸ ", line.text))
                               : style.Faint(style.WrapLines(4, "", line.text)))
              << '\n';
}

// The findings in their order, and what decided between the first two.
void PrintRanking(const std::vector<CheckerResult>& ranked, const Texts& texts,
                  const Style& style) {
  std::cout << style.Bold(texts.FormatUi("why_this")) << '\n';
  for (std::size_t i = 0; i < ranked.size(); ++i) {
    const std::string line =
        std::to_string(i + 1) + ". " + RenderSentence(*ranked[i].finding, texts);
    std::cout << "  " << (i == 0 ? style.Bold(line) : line)
              << style.Faint(Remark(texts.GetText("checker", ranked[i].name), texts)) << '\n';
  }
  std::cout << style.WrapLines(2, "", ExplainOrder(ranked, texts)) << '\n';
}

void Print(const CompleteAnswer& complete, const Texts& texts) {
  const auto& [time, explanation, evidence, notes, snapshotTime] = complete;
  const Style style = Style::ForStandardOutput();
  const SourceReports& sources = explanation.reply.sources;
  const Finding rule = ParseAnswer(explanation.reply.document).rule;
  for (const CheckerResult& result : explanation.checkers) {
    std::cout << FormatChecker(result, sources, texts, style) << '\n';
    PrintInputs(result, evidence.parts, texts, style);
    PrintCauses(evidence, result, texts, style);
  }
  std::cout << '\n';
  PrintRanking(MostUrgentFirst(explanation.checkers), texts, style);
  if (ChooseExitStatus(rule, sources) == kIncomplete)
    std::cout << "  " << style.Severity(Verdict::Unknown, texts.AddLabel(texts.FormatUi("unknown")))
              << FormatAnswer(rule, sources, texts) << '\n';
  std::cout << '\n';
  for (const ToldLine& line : FormatSourceLines(sources, texts)) std::cout << style.Source(line);
  for (const ToldLine& line : FormatNotes(notes, texts)) std::cout << style.Note(line);
  std::cout << style.Faint(FormatSourcesLine(sources, texts)) << '\n';
}

}  // namespace

ExitStatus RunExplain(Session& session) {
  const SimulatedMachine machine = session.OpenMachine();
  const CompleteAnswer complete = AskForEverything(session.GetHost(), machine);
  const Explanation& explanation = complete.explanation;
  if (explanation.checkers.empty()) {
    throw Failure(
        kUnavailable,
        "Cannot explain: explain/VELA.Core.System.SystemHealth.Explain.so is not installed beside "
        "the health module. Build or install the whole program.");
  }
  if (session.Options().json)
    std::cout << explanation.json << '\n';
  else
    Print(complete, session.GetTexts());
  const Reply& reply = explanation.reply;
  return ChooseExitStatus(ParseAnswer(reply.document).rule, reply.sources);
}

}  // namespace host
