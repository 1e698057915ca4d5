#include "host/cli/commands.h"

#include <iostream>

#include "host/answer/coverage.h"
#include "host/answer/explanation.h"
#include "host/answer/finding_text.h"
#include "host/answer/notes.h"
#include "host/answer/sources.h"
#include "host/answer/verdict.h"
#include "host/cli/terminal.h"
#include "host/text/escape.h"
#include "host/text/quantity.h"

namespace host {
namespace {

std::string MachineLine(const Answer& answer, const Reply& reply, const Texts& texts) {
  std::string line = FormatSourcesLine(reply.sources, texts);
  if (!answer.hostname.empty()) line += " · " + Sanitize(answer.hostname);
  const std::string uptime = FormatUptime(answer.uptime, texts);
  if (!uptime.empty()) line += " · " + texts.FormatUi("up", uptime);
  return line;
}

void Print(const Answer& answer, const Reply& reply, const Notes& notes, const Texts& texts) {
  const Style style = Style::ForStandardOutput();
  const Verdict verdict = JudgeAnswer(answer.rule, reply.sources);
  std::cout << style.Severity(verdict, texts.FormatUi(ToString(verdict)))
            << texts.Resolve("common:colon") << ' '
            << style.Bold(FormatAnswer(answer.rule, reply.sources, texts)) << '\n';
  if (verdict != Verdict::Well && verdict != Verdict::Unknown) {
    const std::string label = texts.AddColon(texts.FormatUi("do")) + " ";
    std::cout << style.WrapLines(2, "", label + FindAdvice(answer.rule, "do", texts)) << '\n';
  }
  for (const ToldLine& line : FormatSourceLines(reply.sources, texts))
    std::cout << style.Source(line);
  for (const ToldLine& line : FormatNotes(notes, texts)) std::cout << style.Note(line);
  std::cout << style.Faint(style.WrapLines(2, "", MachineLine(answer, reply, texts))) << '\n';
}

}  // namespace

ExitStatus RunStatus(Session& session) {
  const SimulatedMachine machine = session.OpenMachine();
  const Host& host = session.GetHost();
  const Reply reply = host.CallMethod(FindHealthMethod(host), machine);
  const Answer answer = ParseAnswer(reply.document);
  const ExitStatus status = ChooseExitStatus(answer.rule, reply.sources);
  if (session.Options().json) {
    std::cout << reply.document << '\n';
  } else {
    Print(answer, reply, host.GetPlatform().ReadNotes(), session.GetTexts());
  }
  return status;
}

}  // namespace host
