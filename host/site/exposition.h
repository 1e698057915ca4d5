// Metrics as text, in the two forms that scrapers ask for.
#pragma once

#include <string>
#include <vector>

#include <prometheus/metric_family.h>

namespace host {

enum class Exposition { Text, OpenMetrics };

// What an Accept header likes best, OpenMetrics where it likes both alike; Text for who sent none
// or wants neither.
Exposition ChooseExposition(const char* accept);

const char* NameContentType(Exposition form);

std::string Expose(const std::vector<prometheus::MetricFamily>& families, Exposition form);

}  // namespace host
