// Families of gauges, as they are filled one by one.
#pragma once

#include <set>
#include <vector>

#include <prometheus/metric_family.h>

namespace host {

class Series {
 public:
  using Label = prometheus::ClientMetric::Label;

  // The family that the next series belong to; one without series is left out.
  void Start(const char* name, const char* help);
  // Labels are sanitized, and cut where they are long. A family has no two series with the same
  // labels, or the whole scrape would be refused: the first of equal ones counts.
  void Add(std::vector<Label> labels, double value);
  std::vector<prometheus::MetricFamily> Take();

 private:
  std::vector<prometheus::MetricFamily> families_;
  std::set<std::vector<Label>> taken_;  // in the last family
};

}  // namespace host
