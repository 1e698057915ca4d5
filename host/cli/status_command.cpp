#include "host/cli/status_command.h"

#include <iostream>

#include "host/answer/explanation.h"
#include "host/answer/finding_text.h"
#include "host/answer/sources_line.h"
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

void Print(const Answer& answer, const Reply& reply, const Texts& texts) {
  const Style style = Style::ForStandardOutput();
  const Verdict verdict = JudgeFinding(answer.rule);
  const bool incomplete = verdict == Verdict::Well && CountSources(reply.sources).failed > 0;
  if (incomplete) {
    std::cout << style.Severity(Verdict::Notice, texts.FormatUi("incomplete")) << '\n';
  } else {
    std::cout << style.Severity(verdict, texts.FormatUi(ToString(verdict)))
              << texts.Resolve("common:colon") << ' '
              << style.Bold(RenderSentence(answer.rule, texts)) << '\n';
  }
  if (verdict != Verdict::Well) {
    const std::string label = texts.FormatUi("do") + texts.Resolve("common:colon") + " ";
    std::cout << style.Hanging(2, "", label + FindAdvice(answer.rule, "do", texts)) << '\n';
  }
  for (const std::string& line : FormatFailedSources(reply.sources, texts)) {
    std::cout << style.Hanging(2, "", line) << '\n';
  }
  std::cout << style.Faint(style.Hanging(2, "", MachineLine(answer, reply, texts))) << std::endl;
}

}  // namespace

ExitStatus RunStatus(Session& session) {
  const SimulatedMachine machine = session.Machine();
  const Host& host = session.GetHost();
  const bool json = session.Options().json;
  const Reply reply =
      json ? host.CallMethod(FindHealthMethod(host), machine) : AskExplanation(host, machine).reply;
  const Answer answer = ParseAnswer(reply.document);
  if (json) {
    std::cout << reply.document << std::endl;
  } else {
    Print(answer, reply, session.GetTexts());
  }
  return ChooseExitStatus(JudgeFinding(answer.rule), CountSources(reply.sources));
}

}  // namespace host
