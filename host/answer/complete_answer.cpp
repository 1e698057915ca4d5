#include "host/answer/complete_answer.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

#include "common/json_reader.h"
#include "common/json_writer.h"
#include "host/answer/catalogue.h"
#include "host/answer/derived_evidence.h"
#include "host/answer/finding_text.h"
#include "host/answer/input_lines.h"
#include "host/answer/remedies.h"
#include "host/answer/told_json.h"
#include "host/answer/verdict.h"
#include "host/text/quantity.h"

namespace host {
namespace {

// Seconds of "26:3:4"; null when they are not known.
Json::Value CountSeconds(const std::string& uptime) {
  long long hours = 0, minutes = 0, seconds = 0;
  if (std::sscanf(uptime.c_str(), "%lld:%lld:%lld", &hours, &minutes, &seconds) != 3) return {};
  return Json::Int64{(hours * 60 + minutes) * 60 + seconds};
}

std::string FindCheckOf(const Finding& finding) {
  const auto& all = Catalogue();
  const auto entry = std::ranges::find_if(all, [&finding](const CatalogueEntry& each) {
    return each.id == finding.id && each.textKey == finding.TextKey();
  });
  return entry != all.end() ? entry->check : "";
}

template <typename Commands>
Json::Value ListCommands(const Commands& commands) {
  Json::Value list(Json::arrayValue);
  for (const std::string_view command : commands) list.append(std::string(command));
  return list;
}

Json::Value ToAdvice(const Finding& finding, const Texts& texts) {
  Json::Value advice;
  for (const char* key : {"do", "meaning", "ignored", "where"})
    advice[key] = FindAdvice(finding, key, texts);
  advice["how"] = ListCommands(ListGenericCommands(finding));
  return advice;
}

Json::Value ListFindings(const std::vector<CheckerResult>& ranked, const Evidence& evidence,
                         const Texts& texts) {
  Json::Value list(Json::arrayValue);
  for (const CheckerResult& result : ranked) {
    Json::Value& object = list.append(Json::objectValue);
    object["check"] = result.name;
    object["verdict"] = ToString(JudgeFinding(*result.finding));
    object["id"] = result.finding->id;
    object["text_key"] = result.finding->TextKey();
    object["rule"] = result.rule;
    object["sentence"] = RenderSentence(*result.finding, texts);
    object["why"] = ListCauses(evidence, result.name, texts);
    object["commands"] =
        ListCommands(ChooseCommands(*result.finding, FormatCauses(evidence, result.name, texts)));
    object["advice"] = ToAdvice(*result.finding, texts);
  }
  return list;
}

Json::Value ListChecks(const Explanation& explanation, const Parts& parts, const Texts& texts) {
  Json::Value list(Json::arrayValue);
  for (const CheckerResult& result : explanation.checkers) {
    Json::Value& object = list.append(Json::objectValue);
    object["name"] = result.name;
    object["title"] = texts.GetText("checker", result.name);
    object["outcome"] = ToString(result.outcome);
    object["text"] = result.finding ? RenderSentence(*result.finding, texts)
                                    : FormatOutcome(result, explanation.reply.sources, texts);
    object["saw"] = result.saw;
    Json::Value& seen = object["seen"] = Json::Value(Json::arrayValue);
    for (const InputLine& line : FormatInputs(result, parts, texts)) seen.append(line.text);
  }
  return list;
}

Json::Value ListVersions() {
  Json::Value versions;
  versions["program"] = VELA_VERSION;
  versions["module"] = Json::Int64{kHealthVersion};
  return versions;
}

// The verdict, and whose it is.
Json::Value Summarize(const Explanation& explanation, const Texts& texts) {
  const Reply& reply = explanation.reply;
  const Answer answer = ParseAnswer(reply.document);
  Json::Value summary;
  summary["versions"] = ListVersions();
  summary["language"] = texts.Language();
  summary["hostname"] = answer.hostname;
  summary["uptime"] = CountSeconds(answer.uptime);
  summary["verdict"] = ToString(JudgeAnswer(answer.rule, reply.sources));
  summary["exit_status"] = ChooseExitStatus(answer.rule, reply.sources);
  summary["sentence"] = FormatAnswer(answer.rule, reply.sources, texts);
  summary["coverage"] = FormatCoverage(explanation, texts);
  return summary;
}

}  // namespace

std::vector<CheckerResult> RankFindings(const Explanation& explanation) {
  if (!explanation.checkers.empty()) return MostUrgentFirst(explanation.checkers);
  Json::Value document;
  common::ParseJson(explanation.reply.document, document);
  const Finding finding = ParseFinding(document["rule"]);
  if (finding.AllWell()) return {};
  return {{FindCheckOf(finding), Outcome::Finding, {}, document["rule"], finding}};
}

CompleteAnswer AskForEverything(const Host& host, const SimulatedMachine& machine) {
  const HeldRequest held(host.GetPlatform());
  const Platform& platform = host.GetPlatform();
  CompleteAnswer complete{std::time(nullptr), AskExplanation(host, machine), {}, {}, -1};
  complete.evidence = GatherEvidence(platform, complete.explanation.checkers);
  complete.notes = platform.ReadNotes();
  complete.snapshotTime = platform.ReadSnapshotTime();
  return complete;
}

std::string WriteCompleteAnswer(const CompleteAnswer& complete, const Texts& texts) {
  const Explanation& explanation = complete.explanation;
  Json::Value document;
  common::ParseJson(explanation.reply.document, document);
  Json::Value root = Summarize(explanation, texts);
  root["time"] = FormatUtcTime(complete.time);
  root["findings"] = ListFindings(RankFindings(explanation), complete.evidence, texts);
  root["document"] = std::move(document);
  root["checks"] = ListChecks(explanation, complete.evidence.parts, texts);
  root["sources"] = ListSources(explanation.reply.sources, texts);
  root["parts"] = ListParts(complete.evidence.parts, texts);
  root["evidence"] = ListEvidence(complete.evidence, texts);
  root["notes"] = ListNotes(complete.notes, texts);
  return common::WriteCompact(root);
}

}  // namespace host
