// Scenario files that are wrong: the message names file, line and member, and no machine comes of
// them. Right ones are what scenario_test.cpp plays.
#include "platform/simulator/scenario.h"

#include <fstream>

#include <gtest/gtest.h>

#include "tests/support/own_folder.h"
#include "tests/support/scenario_folders.h"

namespace simulator {
namespace {

std::string MessageFor(const std::string& text) {
  try {
    ParseScenario("state.json", text);
  } catch (const ScenarioError& error) {
    return error.what();
  }
  return "accepted";
}

TEST(ScenarioFile, IsRefusedWithLineMemberAndWhatItMustBe) {
  const auto expectRefusal = [](const std::string& text, const std::string& beginning) {
    EXPECT_EQ(MessageFor(text).substr(0, beginning.size() + 11), "state.json:" + beginning);
  };
  for (const auto& row :
       scenarios::Read(scenarios::Folder("../tests/fixtures/scenario_errors.json")))
    expectRefusal(row[0].asString(), row[1].asString());
  expectRefusal("\xEF\xBB\xBF" + std::string(5000, '['), "1: nested deeper than 256 levels");
  expectRefusal("\n[" + std::string(300'000, '1') + "e]", "2: not JSON: '111");
}

TEST(ScenarioFile, EndsOfARangeAndCommentsAreWelcome) {
  const Machine machine = ParseScenario("state.json", R"(// a comment
{"uptime": null, "ups": {"state": -2147483648, "enabled": 2147483647, "connected": 255},
 "storage": {"volumes": [{"path": "/volume9", "total": 18446744073709551615}]},
 "configuration": {"defaults": {"supportsystempwarning": null}}})");
  EXPECT_FALSE(machine.uptime);
  EXPECT_EQ(machine.upsState, std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(machine.upsEnabled, std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(machine.upsConnected, 255);
  EXPECT_EQ(machine.volumes.at(0).total, 18446744073709551615U);
  EXPECT_EQ(machine.defaults, (decltype(machine.defaults){{"maxdisks", "8"}}));
}

TEST(ScenarioFile, EachMemberOfAPartAndItsEvidenceIsAFieldOfItsOwn) {
  const Machine machine = ParseScenario("state.json", R"({"parts": [{"kind": "LUN",
 "state": "empty", "name": "a", "device": "b", "path": "c", "parent": "d", "bay": "e", "slot": "f",
 "port": "g", "mountPoint": "h", "model": "i", "serial": "j", "size": 1, "used": 2, "total": 3,
 "reading": -4, "mark": 5, "unit": "k"}], "evidence": [{"key": "a", "check": "b", "part": "c",
 "words": "d", "path": "e", "figure": 1, "mark": 2, "other": 3, "since": 4, "show": "f",
 "mend": ["g", "h"], "related": [{"relation": "i", "part": "j"}], "moreRelated": 5}]})");
  const VELAPart part = {source_status::PartKind::Lun,
                         source_status::PartState::Empty,
                         "a",
                         "b",
                         "c",
                         "d",
                         "e",
                         "f",
                         "g",
                         "h",
                         "i",
                         "j",
                         1,
                         2,
                         3,
                         -4,
                         5,
                         "k"};
  EXPECT_TRUE(machine.parts.at(0) == part);
  const VELAEvidence evidence = {"a", "b", "c", "d",        "e",          1, 2,
                                 3,   4,   "f", {"g", "h"}, {{"i", "j"}}, 1, 5};
  EXPECT_TRUE(machine.evidence.at(0) == evidence);
}

TEST(ScenarioFolder, IsReadOrRefusedByTheFileInIt) {
  const std::string folder = test_support::OwnFolder(), file = folder + "state.json";
  EXPECT_THROW(LoadScenario(folder), ScenarioError);
  std::ofstream(file) << "";
  EXPECT_THROW(LoadScenario(file), ScenarioError);
  std::ofstream(file) << "{\"ups\": {\"state\": 3}}";
  EXPECT_EQ(LoadScenario(folder).upsState, 3);
  EXPECT_EQ(LoadScenario(file).upsState, 3);
}

}  // namespace
}  // namespace simulator
