// The SAN tool's output from its pipe to the checker, beside a bare parse of the same text.
#include <benchmark/benchmark.h>
#include <json/reader.h>

#include "SystemChecker/checkers.h"
#include "SystemInfo/system_info_handler.h"
#include "benchmarks/heap_calls.h"
#include "benchmarks/san_document.h"
#include "platform/simulator/machine.h"

namespace {

using namespace VELA::SystemHealth;

const std::string& Document() {
  static const std::string document = SanDocument(10'000, 1'000);
  return document;
}

// An otherwise empty machine, so that only the SAN counts.
simulator::Machine SanMachine() {
  simulator::Machine machine;
  machine.volumes.clear();
  machine.usb.clear();
  machine.maxDisks = 0;
  machine.securityScan.reset();
  machine.sanOutput = Document();
  return machine;
}

void SanParse(benchmark::State& state) {
  for (auto _ : state) {
    Json::Value root;
    benchmark::DoNotOptimize(Json::Reader().parse(Document(), root));
  }
}
BENCHMARK(SanParse)->Name("SanParse")->Repetitions(7)->ReportAggregatesOnly();

void SanIntake(benchmark::State& state) {
  simulator::Machine machine = SanMachine();
  simulator::Enter(&machine);
  ResetPeak();
  const std::size_t before = HeapUsed().live;
  for (auto _ : state) {
    const SystemInfoHandler info;
    benchmark::DoNotOptimize(SANStatusChecker(info));
  }
  state.counters["peak/text"] =
      static_cast<double>(HeapUsed().peak - before) / static_cast<double>(Document().size());
  simulator::Enter(nullptr);
}
BENCHMARK(SanIntake)->Name("SanIntake")->Repetitions(7)->ReportAggregatesOnly();

void SanMatch(benchmark::State& state) {
  simulator::Machine machine = SanMachine();
  simulator::Enter(&machine);
  {
    const SystemInfoHandler info;
    for (auto _ : state) benchmark::DoNotOptimize(SANStatusChecker(info));
  }
  simulator::Enter(nullptr);
}
BENCHMARK(SanMatch)->Name("SanMatch")->Repetitions(7)->ReportAggregatesOnly();

}  // namespace
