// Scenario files that are wrong: the message names file, line and member, and no machine comes of
// them. Right ones are what scenario_test.cpp plays.
#include "platform/simulator/scenario.h"

#include <fstream>

#include <gtest/gtest.h>

#include "tests/support/own_folder.h"

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
  const struct {
    std::string text;
    std::string message;  // its beginning, after the file's name
  } cases[] = {
      {"", "1: not JSON: "},
      {"{\n\"uptime\": 1,\n\"uptime\": 2}", "3: not JSON: Duplicate key: 'uptime'"},
      {std::string(5000, '['), "1: not JSON: "},
      {"{\n\"why\": \"x\",\n\"upss\": {}}",
       "3: unknown member \"upss\"; known here: configuration, error, "},
      {R"({"expansionUnits": {"units": [{}, {"power": {"words": 3}}]}})",
       "1: unknown member \"expansionUnits.units[1].power.words\"; known here: result, word"},
      {"{\n\"ups\": 3}", "2: \"ups\" must be an object {...}"},
      {R"({"storage": {"volumes": [7]}})", "1: \"storage.volumes[0]\" must be an object {...}"},
      {R"({"storage": {"disks": null}})", "1: \"storage.disks\" must be a list"},
      {R"({"ups": {"fails": null}})", "1: \"ups.fails\" must be true or false"},
      {R"({"hostName": 7})", "1: \"hostName\" must be a text"},
      {R"({"storage": {"volumes": [{"warningShare": "0.05"}]}})",
       "1: \"storage.volumes[0].warningShare\" must be a number"},
      {R"({"configuration": {"defaults": []}})",
       "1: \"configuration.defaults\" must be an object of texts"},
      {R"({"configuration": {"settings": {"a": 0}}})",
       "1: \"configuration.settings.a\" must be a text, or null for none"},
      {R"({"ups": {"connected": 256}})",
       "1: \"ups.connected\" must be a whole number from 0 to 255"},
      {R"({"ups": {"state": -2147483649}})",
       "1: \"ups.state\" must be a whole number from -2147483648 to 2147483647"},
      {R"({"ups": {"state": 2147483648}})", "1: \"ups.state\" must be a whole number"},
      {R"({"ups": {"state": 2.5}})", "1: \"ups.state\" must be a whole number"},
      {R"({"hardware": {"powerDetail": -1}})",
       "1: \"hardware.powerDetail\" must be a whole number"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(MessageFor(c.text).substr(0, c.message.size() + 11), "state.json:" + c.message);
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
