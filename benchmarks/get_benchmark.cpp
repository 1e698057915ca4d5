// One request on the healthy machine beside what the JSON library alone takes for its document.
#include <benchmark/benchmark.h>
#include <json/writer.h>

#include "benchmarks/get.h"
#include "platform/simulator/machine.h"

namespace {

void GetHealthy(benchmark::State& state) {
  simulator::Machine machine;
  simulator::Enter(&machine);
  for (auto _ : state) Get();
  simulator::Enter(nullptr);
}
BENCHMARK(GetHealthy)->Name("Get")->Repetitions(9)->ReportAggregatesOnly();

// The healthy answer, member by member, as the library's documentation shows it.
Json::Value PlainAnswer() {
  Json::Value description;
  description["description_format"] = "{0}";
  description["description_params"].append("widget:system_ok");
  description["description_use_formatted"] = false;
  Json::Value answer;
  answer["rule"]["type"] = 2;
  answer["rule"]["priority"] = 40.0;
  answer["rule"]["id"] = "system_health";
  answer["rule"]["description"] = description;
  answer["hostname"] = "vela";
  answer["uptime"] = "26:3:4";
  for (const char* name : {"eth0", "eth1", "eth2", "bond0"}) {
    Json::Value interface;
    interface["id"] = name;
    interface["ip"] = "192.168.1.20";
    interface["type"] = "lan";
    answer["interfaces"].append(interface);
  }
  return answer;
}

void PlainJson(benchmark::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(Json::writeString(Json::StreamWriterBuilder(), PlainAnswer()));
}
BENCHMARK(PlainJson)->Name("PlainJson")->Repetitions(9)->ReportAggregatesOnly();

}  // namespace
