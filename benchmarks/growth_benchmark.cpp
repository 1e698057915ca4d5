// How a request's cost grows with what the machine holds.
#include <benchmark/benchmark.h>

#include "benchmarks/get.h"
#include "benchmarks/san_document.h"
#include "platform/simulator/machine.h"

namespace {

using simulator::Machine;

void Measure(benchmark::State& state, Machine& machine) {
  simulator::Enter(&machine);
  for (auto _ : state) Get();
  simulator::Enter(nullptr);
}

void Volumes(benchmark::State& state) {
  Machine machine;
  machine.volumes.resize(static_cast<std::size_t>(state.range(0)), machine.volumes[0]);
  Measure(state, machine);
}

void Disks(benchmark::State& state) {
  Machine machine;
  const auto count = static_cast<std::size_t>(state.range(0));
  while (machine.disks.Size() < count)
    machine.disks.Append(simulator::MakeDisk("Disk 9", "normal", "volume_1"));
  Measure(state, machine);
}

void Luns(benchmark::State& state) {
  Machine machine;
  machine.sanOutput = SanDocument(state.range(0), state.range(0) / 10);
  Measure(state, machine);
}

#define GROWTH(function)       \
  BENCHMARK(function)          \
      ->Name(#function)        \
      ->Arg(1000)              \
      ->Arg(100000)            \
      ->Repetitions(5)         \
      ->ReportAggregatesOnly() \
      ->Unit(benchmark::kMillisecond)
GROWTH(Volumes);
GROWTH(Disks);
GROWTH(Luns);

}  // namespace
