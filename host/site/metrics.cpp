#include "host/site/metrics.h"

#include <prometheus/counter.h>
#include <prometheus/summary.h>

namespace host {

struct Metrics::State {
  prometheus::Counter answers;
  prometheus::Summary seconds{prometheus::Summary::Quantiles{}};
};

Metrics::Metrics() : state_(std::make_unique<State>()) {}
Metrics::~Metrics() = default;

void Metrics::Answered(std::chrono::steady_clock::duration took, std::size_t requests) const {
  state_->seconds.Observe(std::chrono::duration<double>(took).count());
  state_->answers.Increment(static_cast<double>(requests));
}

std::vector<prometheus::MetricFamily> Metrics::Collect() const {
  using prometheus::MetricType;
  return {{"vela_health_answers_total",
           "Answers given, whoever asked; requests that waited together share one look",
           MetricType::Counter,
           {state_->answers.Collect()}},
          {"vela_health_answer_seconds",
           "Time that it took to look at the machine and make an answer",
           MetricType::Summary,
           {state_->seconds.Collect()}}};
}

}  // namespace host
