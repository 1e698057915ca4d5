// Every simulated machine, recorded and played again.
#include <gtest/gtest.h>

#include <filesystem>
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

// What its user can see of one request: the document, what each source said, and what is told
// beside it.
std::string Ask(const SimulatedMachine& machine) {
  const Reply reply =
      RecordedSimulator().CallMethod(FindHealthMethod(RecordedSimulator()), machine);
  std::string all = reply.document;
  for (const VELASourceReport& source : reply.sources) {
    all += std::string("\n") + source.name + " " + source_status::NameState(source.state);
    for (const VELASourceReason& each : source.reasons)
      all += each.text + ("|" + std::string(each.remedy));
    all += std::to_string(source.moreReasons);
  }
  for (const VELANote& note : RecordedSimulator().GetPlatform().ReadNotes())
    all.append(reinterpret_cast<const char*>(&note), sizeof note);
  for (const VELAPart& part : RecordedSimulator().GetPlatform().ReadParts())
    all.append(reinterpret_cast<const char*>(&part), sizeof part);
  for (const VELAEvidence& each : RecordedSimulator().GetPlatform().ReadEvidence())
    all.append(reinterpret_cast<const char*>(&each), sizeof each);
  return all;
}

// The state that was recorded. Each machine starts from a healthy one, not from what the last
// one was asked.
std::string ExpectSameAnswerAgain(const std::filesystem::path& scenario) {
  const std::string file = test_support::OwnFolder() + "captured.json";
  const Platform& simulator = RecordedSimulator().GetPlatform();
  Recorder again(VELA_RECORDER, simulator);
  const SimulatedMachine machine = simulator.OpenScenario(scenario);
  const std::string answer = Ask(machine);
  const std::string state = RecordedSimulator().GetRecordedState("why");
  std::ofstream(file) << state;
  EXPECT_EQ(Ask(simulator.OpenScenario(file)), answer) << state;
  return state;
}

TEST(Capture, EveryMachineGivesTheSameAnswerAgain) {
  for (const std::string& name : scenarios::Names()) {
    SCOPED_TRACE(name);
    ExpectSameAnswerAgain(scenarios::Folder(name));
  }
  for (const scenarios::Boundary& machine : scenarios::Boundaries()) {
    SCOPED_TRACE(machine.name);
    ExpectSameAnswerAgain(machine.state);
  }
  EXPECT_EQ(ExpectSameAnswerAgain(scenarios::Folder("healthy")), "{\n  \"why\": \"why\"\n}\n");
}

}  // namespace
}  // namespace host::test
