// What Prometheus reads at /metrics.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include "host/loader/host.h"

namespace host {

// Thread-safe. The answer times add up over the life of the process; everything else is
// asked afresh for each scrape.
class Metrics {
 public:
  Metrics();
  ~Metrics();
  Metrics(const Metrics&) = delete;
  Metrics& operator=(const Metrics&) = delete;

  // The machine was asked once for a health answer, which so many requests got.
  void Answered(std::chrono::steady_clock::duration took, std::size_t requests) const;

  // The text exposition format. Throws what Host::Ask throws.
  std::string Scrape(const Host& host, const SimulatedMachine& machine) const;

 private:
  struct State;
  const std::unique_ptr<State> state_;
};

}  // namespace host
