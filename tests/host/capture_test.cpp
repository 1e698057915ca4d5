// Every scenario, recorded and played again.
#include <gtest/gtest.h>

#include <fstream>

#include "host/loader/host.h"
#include "tests/support/own_folder.h"
#include "tests/support/scenario_folders.h"

namespace host::test {
namespace {

const Host& RecordedSimulator() {
  static const Host host(HostFiles{VELA_SIMULATOR, {VELA_MODULE}, VELA_RECORDER});
  return host;
}

// What its user can see of one request: the document and what each source said.
std::string Ask(const SimulatedMachine& machine) {
  const Reply reply =
      RecordedSimulator().CallMethod(FindHealthMethod(RecordedSimulator()), machine);
  std::string all = reply.document;
  for (const VELASourceReport& source : reply.sources) {
    all += std::string("\n") + source.name + " " + std::to_string(source.state) + source.reason;
  }
  return all;
}

TEST(Capture, EveryScenarioGivesTheSameAnswerAgain) {
  const std::string file = test_support::OwnFolder() + "captured.json";
  const Platform& simulator = RecordedSimulator().GetPlatform();
  for (const std::string& name : scenarios::Names()) {
    // Each starts from a healthy machine, not from what the last one was asked.
    Recorder again(VELA_RECORDER, simulator);
    const std::string answer = Ask(simulator.OpenScenario(scenarios::Folder(name)));
    const std::string state = RecordedSimulator().Recorded("why");
    std::ofstream(file) << state;
    SCOPED_TRACE(name + "\n" + state);
    EXPECT_EQ(Ask(simulator.OpenScenario(file)), answer);
    if (name == "healthy") {
      EXPECT_EQ(state, "{\n  \"why\": \"why\"\n}\n");
    }
  }
}

}  // namespace
}  // namespace host::test
