#include "host/site/page_answer.h"

#include "common/json_writer.h"
#include "host/answer/explanation.h"
#include "host/answer/verdict.h"

namespace host {
namespace {

Json::Value SourcesOf(const Reply& reply) {
  Json::Value sources(Json::arrayValue);
  for (const VELASourceReport& report : reply.sources) {
    Json::Value source;
    source["name"] = report.name;
    source["state"] = NameSourceState(report);
    if (report.reason[0] != '\0') source["reason"] = report.reason;
    sources.append(std::move(source));
  }
  return sources;
}

Json::Value FurtherFindings(const std::vector<CheckerResult>& checkers) {
  Json::Value findings(Json::arrayValue);
  const auto results = MostUrgentFirst(checkers);
  for (std::size_t i = 1; i < results.size(); ++i) findings.append(results[i].rule);
  return findings;
}

}  // namespace

std::string PageAnswer(const Host& host, const SimulatedMachine& machine) {
  const Explanation explanation = AskExplanation(host, machine);
  return "{\"answer\":" + explanation.reply.document +
         ",\"findings\":" + common::WriteCompact(FurtherFindings(explanation.checkers)) +
         ",\"sources\":" + common::WriteCompact(SourcesOf(explanation.reply)) + "}";
}

}  // namespace host
