// Whatever a scenario file holds: a message that says where it is wrong, or a machine that
// answers the same twice, and once more when it was written down and read again.
#include <cstdint>

#include "fuzz/one_request.h"
#include "platform/simulator/scenario.h"
#include "platform/simulator/scenario_writer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    simulator::Machine machine = simulator::ParseScenario(
        "state.json", std::string(reinterpret_cast<const char*>(data), size));
    const fuzz::Answer answer = fuzz::OneRequest(machine);
    fuzz::Require(fuzz::OneRequest(machine) == answer, "the same answer twice");
    const std::string written = simulator::WriteScenario(machine, "written");
    simulator::Machine again = simulator::ParseScenario("written", written);
    fuzz::Require(fuzz::OneRequest(again) == answer, written);
  } catch (const simulator::ScenarioError& error) {
    const std::string message = error.what();
    fuzz::Require(message.starts_with("state.json:") && std::isdigit(message[11]) != 0, message);
  }
  return 0;
}
