#include "host/site/series.h"

#include <string_view>
#include <utility>

#include "common/sanitize.h"

namespace host {

using prometheus::ClientMetric, prometheus::MetricFamily, prometheus::MetricType;

namespace {

// Cut between two characters.
std::string MakeLabel(std::string_view text) {
  constexpr std::size_t kLongest = 256;
  constexpr std::string_view kCut = "...";
  std::string label = common::Sanitize(text);  // which may make it longer
  if (label.size() <= kLongest) return label;
  std::size_t end = kLongest - kCut.size();
  while (end > 0 && (label[end] & 0xC0) == 0x80) --end;  // within one
  label.replace(end, std::string::npos, kCut);
  return label;
}

}  // namespace

void Series::Start(const char* name, const char* help) {
  families_.push_back({name, help, MetricType::Gauge, {}});
  taken_.clear();
}

void Series::Add(std::vector<Label> labels, double value) {
  for (Label& label : labels) label.value = MakeLabel(label.value);
  if (!taken_.insert(labels).second) return;
  ClientMetric& metric = families_.back().metric.emplace_back();
  metric.label = std::move(labels);
  metric.gauge.value = value;
}

std::vector<MetricFamily> Series::Take() {
  std::erase_if(families_, [](const MetricFamily& family) { return family.metric.empty(); });
  return std::move(families_);
}

}  // namespace host
