// What one complete answer says, as metrics: names and units by Prometheus's conventions.
#pragma once

#include <vector>

#include <prometheus/metric_family.h>

#include "host/answer/complete_answer.h"
#include "host/text/texts.h"

namespace host {

// No value is a code: whatever is not plain has a series that names it, and the count of such
// series is 0 on a healthy machine. No series changes only because time passes. No two series of
// a family have the same labels. docs/metrics.md describes each.
std::vector<prometheus::MetricFamily> CollectFamilies(const CompleteAnswer& complete,
                                                      const Texts& texts);

}  // namespace host
