#include "host/site/metrics.h"

#include <prometheus/counter.h>
#include <prometheus/histogram.h>
#include <prometheus/metric_family.h>
#include <prometheus/text_serializer.h>

#include <utility>

#include "host/answer/explanation.h"
#include "host/answer/verdict.h"

namespace host {
namespace {

using prometheus::ClientMetric;
using prometheus::MetricFamily;
using prometheus::MetricType;
using Labels = std::vector<ClientMetric::Label>;

MetricFamily Gauges(const char* name, const char* help) {
  return {name, help, MetricType::Gauge, {}};
}

void Add(MetricFamily& family, Labels labels, double value) {
  ClientMetric metric;
  metric.label = std::move(labels);
  metric.gauge.value = value;
  family.metric.push_back(std::move(metric));
}

Labels LabelFinding(const Finding& finding, Verdict verdict) {
  return {{"id", finding.id}, {"type", ToString(verdict)}, {"text", finding.TextKey()}};
}

MetricFamily MostUrgent(const Finding& finding, const SourceReports& sources) {
  MetricFamily family = Gauges("vela_health_finding_priority",
                               "The most urgent finding; the smaller, the more urgent, 40 is none: "
                               "well, or unknown where something was not read");
  Add(family, LabelFinding(finding, JudgeAnswer(finding, sources)), finding.priority);
  return family;
}

void AddCheckers(std::vector<MetricFamily>& families, const std::vector<CheckerResult>& results) {
  MetricFamily found = Gauges("vela_health_checker_finding", "Whether this checker has a finding");
  MetricFamily made = Gauges("vela_health_checker_made",
                             "0: found nothing, but what it rests on was not read, so not known");
  MetricFamily priority = Gauges("vela_health_checker_priority", "Each checker's finding");
  for (const CheckerResult& result : results) {
    Add(found, {{"checker", result.name}}, result.finding ? 1 : 0);
    Add(made, {{"checker", result.name}}, result.outcome == Outcome::NotMade ? 0 : 1);
    if (!result.finding) continue;
    Labels labels = LabelFinding(*result.finding, JudgeFinding(*result.finding));
    labels.push_back({"checker", result.name});
    Add(priority, std::move(labels), result.finding->priority);
  }
  families.push_back(std::move(found));
  families.push_back(std::move(made));
  families.push_back(std::move(priority));
}

void AddSources(std::vector<MetricFamily>& families, const SourceReports& sources) {
  MetricFamily state = Gauges("vela_health_source_state",
                              "0 not on this machine, 1 read, 2 failed, 3 nobody watches it, "
                              "4 the same, as the settings accept it");
  MetricFamily seconds = Gauges("vela_health_source_seconds", "Time that reading it took");
  for (const VELASourceReport& source : sources) {
    if (source.state == source_status::State::NotAsked) continue;
    Add(state, {{"source", source.name}}, static_cast<double>(source.state));
    Add(seconds, {{"source", source.name}}, source.microseconds / 1e6);
  }
  families.push_back(std::move(state));
  families.push_back(std::move(seconds));
}

MetricFamily BuildInfo() {
  MetricFamily family = Gauges("vela_health_build_info", "Always 1; the version is its label");
  Add(family, {{"version", VELA_VERSION}}, 1);
  return family;
}

}  // namespace

struct Metrics::State {
  prometheus::Counter answers;
  prometheus::Histogram queries{
      prometheus::Histogram::BucketBoundaries{1e-4, 1e-3, 1e-2, 0.1, 0.5, 1, 5, 10}};
};

Metrics::Metrics() : state_(std::make_unique<State>()) {}
Metrics::~Metrics() = default;

void Metrics::Answered(std::chrono::steady_clock::duration took, std::size_t requests) const {
  state_->queries.Observe(std::chrono::duration<double>(took).count());
  state_->answers.Increment(static_cast<double>(requests));
}

std::string Metrics::Scrape(const Host& host, const SimulatedMachine& machine) const {
  const Explanation explanation = AskExplanation(host, machine);
  const Reply& reply = explanation.reply;
  std::vector<MetricFamily> families = {
      MostUrgent(ParseAnswer(reply.document).rule, reply.sources)};
  AddCheckers(families, explanation.checkers);
  AddSources(families, reply.sources);
  families.push_back({"vela_health_answer_seconds",
                      "Time that it took to make a health answer",
                      MetricType::Histogram,
                      {state_->queries.Collect()}});
  families.push_back({"vela_health_answers_total",
                      "Health answers given; requests that waited together share one",
                      MetricType::Counter,
                      {state_->answers.Collect()}});
  families.push_back(BuildInfo());
  return prometheus::TextSerializer().Serialize(families);
}

}  // namespace host
