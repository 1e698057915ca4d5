#include "host/cli/status_command.h"

#include <iostream>

#include "host/answer/advice.h"
#include "host/answer/explanation.h"
#include "host/answer/render.h"
#include "host/answer/sources_line.h"
#include "host/answer/verdict.h"
#include "host/cli/terminal.h"
#include "host/text/sanitize.h"

namespace host {
namespace {

std::string MachineLine(const Answer& answer, const Reply& reply, const Texts& texts) {
  std::string line = SourcesLine(reply.sources, texts);
  if (!answer.hostname.empty()) line += " · " + Sanitize(answer.hostname);
  const std::string uptime = UptimeInWords(answer.uptime, texts);
  if (!uptime.empty()) line += " · " + texts.Ui("up", uptime);
  return line;
}

void Print(const Answer& answer, const Reply& reply, const Texts& texts) {
  const Style style = Style::ForStandardOutput();
  const Verdict verdict = VerdictOf(answer.rule);
  const bool incomplete = verdict == Verdict::Well && Count(reply.sources).failed > 0;
  if (incomplete) {
    std::cout << style.Severity(Verdict::Notice, texts.Ui("incomplete")) << '\n';
  } else {
    std::cout << style.Severity(verdict, texts.Ui(NameOf(verdict))) << texts.Of("common:colon")
              << ' ' << style.Bold(Sentence(answer.rule, texts)) << '\n';
  }
  if (verdict != Verdict::Well) {
    const std::string label = texts.Ui("do") + texts.Of("common:colon") + " ";
    std::cout << style.Hanging(2, "", label + Advice(answer.rule, "do", texts)) << '\n';
  }
  for (const std::string& line : FailedSources(reply.sources, texts)) {
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
      json ? host.Ask(HealthMethod(host), machine) : AskExplanation(host, machine).reply;
  const Answer answer = ParseAnswer(reply.document);
  if (json) {
    std::cout << reply.document << std::endl;
  } else {
    Print(answer, reply, session.GetTexts());
  }
  return StatusOf(VerdictOf(answer.rule), Count(reply.sources));
}

}  // namespace host
