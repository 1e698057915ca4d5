// The answers that a server has given, as metrics.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <vector>

#include <prometheus/metric_family.h>

namespace host {

// Thread-safe. They add up over the life of the process.
class Metrics {
 public:
  Metrics();
  ~Metrics();
  Metrics(const Metrics&) = delete;
  Metrics& operator=(const Metrics&) = delete;

  // The machine was asked once, and so many requests got the answer.
  void Answered(std::chrono::steady_clock::duration took, std::size_t requests) const;

  std::vector<prometheus::MetricFamily> Collect() const;

 private:
  struct State;
  const std::unique_ptr<State> state_;
};

}  // namespace host
