#include "host/site/report_findings.h"

#include "host/answer/finding_text.h"
#include "host/answer/input_lines.h"
#include "host/answer/remedies.h"
#include "host/answer/verdict.h"
#include "host/text/escape.h"

namespace host {
namespace {

std::string Command(std::string_view command) {
  return command.empty() ? "" : MakeElement("code", command, "dir=\"ltr\" lang=\"en\"");
}

std::string Paragraphs(const ToldCause& cause) {
  std::string markup;
  for (const std::string& line : cause.lines) markup += MakeElement("p", line, "dir=\"auto\"");
  return markup + Command(cause.show);
}

std::string Remedy(const Finding& finding, const std::vector<ToldCause>& causes,
                   const Texts& texts) {
  std::string commands;
  for (const std::string& command : ChooseCommands(finding, causes)) commands += Command(command);
  return MakeElement("p", FindAdvice(finding, "do", texts)) + commands;
}

std::string WriteClass(Verdict verdict) {
  return std::string("class=\"") + ToString(verdict) + "\"";
}

Verdict JudgeResult(const CheckerResult& result) {
  if (result.finding) return JudgeFinding(*result.finding);
  return result.outcome == Outcome::Nothing ? Verdict::Well : Verdict::Unknown;
}

std::string Check(const CheckerResult& result, const SourceReports& sources, const Parts& parts,
                  const Texts& texts) {
  std::string inputs;
  for (const InputLine& line : FormatInputs(result, parts, texts)) {
    inputs += MakeElement("li", line.text,
                          line.decides ? "dir=\"auto\" class=\"decides\"" : "dir=\"auto\"");
  }
  const std::string title =
      MakeElement("b", texts.GetText("checker", result.name) + texts.Resolve("common:colon")) +
      MakeElement("bdi", result.finding ? RenderSentence(*result.finding, texts)
                                        : FormatOutcome(result, sources, texts));
  return WrapInTag("article",
                   WrapInTag("h3", title) + (inputs.empty() ? "" : WrapInTag("ul", inputs)),
                   WriteClass(JudgeResult(result)));
}

}  // namespace

std::string Section(const std::string& title, const std::string& markup) {
  return markup.empty() ? "" : WrapInTag("section", MakeElement("h2", title) + markup);
}

std::string LeadOn(const Finding& finding, const std::vector<CheckerResult>& ranked,
                   const Evidence& evidence, const Texts& texts) {
  const std::vector<ToldCause> causes =
      FormatCauses(evidence, ranked.empty() ? "" : ranked.front().name, texts);
  std::string why, list;
  for (const ToldCause& cause : causes) why += WrapInTag("div", Paragraphs(cause));
  if (!why.empty()) why = MakeElement("h2", texts.FormatUi("why")) + why;
  for (const char* key : {"meaning", "ignored", "where"})
    list +=
        MakeElement("dt", texts.FormatUi(key)) + MakeElement("dd", FindAdvice(finding, key, texts));
  return WrapInTag("div",
                   why + MakeElement("h2", texts.FormatUi("do")) + Remedy(finding, causes, texts),
                   "class=\"lead\"") +
         WrapInTag("dl", list);
}

std::string FurtherFindings(const std::vector<CheckerResult>& ranked, const Evidence& evidence,
                            const Texts& texts) {
  std::string articles;
  for (std::size_t i = 1; i < ranked.size(); ++i) {
    const Finding& finding = *ranked[i].finding;
    const Verdict verdict = JudgeFinding(finding);
    const std::vector<ToldCause> causes = FormatCauses(evidence, ranked[i].name, texts);
    std::string markup = WrapInTag(
        "h3", MakeElement("b", texts.FormatUi(ToString(verdict)) + texts.Resolve("common:colon")) +
                  MakeElement("bdi", RenderSentence(finding, texts)));
    for (const ToldCause& cause : causes) markup += Paragraphs(cause);
    articles += WrapInTag("article", markup + Remedy(finding, causes, texts), WriteClass(verdict));
  }
  return Section(texts.FormatUi("further"), articles);
}

std::string Checks(const CompleteAnswer& complete, const std::vector<CheckerResult>& ranked,
                   const Texts& texts) {
  const auto& [reply, results, json] = complete.explanation;
  if (results.empty()) return "";  // the module that explains is not there
  std::string articles;
  for (const CheckerResult& result : results)
    articles += Check(result, reply.sources, complete.evidence.parts, texts);
  return Section(texts.FormatUi("checks"),
                 MakeElement("p", ExplainOrder(ranked, texts)) + articles);
}

}  // namespace host
