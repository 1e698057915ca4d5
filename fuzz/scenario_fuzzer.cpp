// Whatever a scenario file holds: a message that says where it is wrong, or a machine that
// answers the same twice.
#include <cstdint>

#include "fuzz/one_request.h"
#include "platform/simulator/scenario.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    vela::simulator::Machine machine = vela::simulator::ParseScenario(
        "state.json", std::string(reinterpret_cast<const char*>(data), size));
    const fuzz::Answer answer = fuzz::OneRequest(machine);
    fuzz::Require(fuzz::OneRequest(machine) == answer, "the same answer twice");
  } catch (const vela::simulator::ScenarioError& error) {
    const std::string message = error.what();
    fuzz::Require(message.starts_with("state.json:") && std::isdigit(message[11]) != 0, message);
  }
  return 0;
}
