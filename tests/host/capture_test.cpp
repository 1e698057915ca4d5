// Every scenario, recorded and played again; and the machine that this test runs on.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/loader/host.h"
#include "support/program.h"
#include "tests/support/own_folder.h"
#include "tests/support/scenario_folders.h"

namespace host::test {
namespace {

namespace fs = std::filesystem;

const Host& RecordedSimulator() {
  static const Host host(HostFiles{VELA_SIMULATOR, {VELA_MODULE}, VELA_RECORDER});
  return host;
}

// What its user can see of one request: the document and what each source said.
std::string Ask(const SimulatedMachine& machine) {
  const Reply reply = RecordedSimulator().Ask(HealthMethod(RecordedSimulator()), machine);
  std::string all = reply.document;
  for (const VELASourceReport& source : reply.sources) {
    all += std::string("\n") + source.name + " " + std::to_string(source.state) + source.reason;
  }
  return all;
}

std::string Contents(const fs::path& file) {
  std::stringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
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

TEST(Capture, TheRealMachinePlaysAnywhere) {
  const std::string folder = test_support::OwnFolder() + "captured-machine";
  fs::remove_all(folder);
  const Outcome captured = RunProgram({"capture", folder, "--why", "a \"test\"", "--lang", "en"});
  EXPECT_EQ(captured.status, 0) << captured.err;
  EXPECT_NE(captured.out.find("vela-health --scenario " + folder), std::string::npos);
  EXPECT_NE(captured.out.find("host name"), std::string::npos) << "says what it holds";
  const Outcome played = RunProgram({"--scenario", folder, "--json"});
  std::ofstream(folder + "/played.json") << played.out;
  EXPECT_EQ(scenarios::Read(folder + "/played.json"), scenarios::Read(folder + "/expected.json"));
  EXPECT_EQ(scenarios::Read(folder + "/state.json")["why"], "a \"test\"");
}

TEST(Capture, AFolderIsMadeWholeOrNotAtAll) {
  const std::string room = test_support::OwnFolder() + "capture-room", full = room + "/full";
  fs::remove_all(room);
  fs::create_directories(full);
  std::ofstream(full + "/precious") << "here first";
  const struct {
    std::string folder;
    std::vector<std::string> more;
    int status;
    const char* words;
  } cases[] = {{full, {}, 73, "there already"},
               {full + "/precious", {}, 73, "there already"},
               {room + "/none/new", {}, 73, "No such file"},
               {room + "/new", {"--scenario", "no-such"}, 66, "no-such"},
               {room + "/new", {"--module", "/nowhere"}, 69, "/nowhere"}};
  for (const auto& c : cases) {
    std::vector<std::string> arguments = {"capture", c.folder};
    arguments.insert(arguments.end(), c.more.begin(), c.more.end());
    const Outcome outcome = RunProgram(arguments);
    SCOPED_TRACE(c.folder + " " + outcome.err);
    EXPECT_EQ(outcome.status, c.status);
    EXPECT_NE(outcome.err.find(c.words), std::string::npos);
  }
  EXPECT_EQ(Contents(full + "/precious"), "here first");
  const auto left = std::distance(fs::recursive_directory_iterator(room), {});
  EXPECT_EQ(left, 2) << "only what was there before";
}

}  // namespace
}  // namespace host::test
