// Scenario files that are wrong: the message names file, line and member, and no machine
// comes of them.
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

struct BadText {
  const char* text;
  const char* message;  // its beginning
};

void ExpectMessages(const std::vector<BadText>& cases) {
  for (const auto& [text, message] : cases)
    EXPECT_EQ(MessageFor(text).substr(0, std::string(message).size()), message) << text;
}

TEST(ScenarioFile, WhatIsNotJsonIsRefusedWithItsLine) {
  ExpectMessages({
      {"", "state.json:1: not JSON: "},
      {"{\n  \"ups\": {\"state\": }\n}", "state.json:2: not JSON: "},
      {"{\"ups\": {\"state\": 2}", "state.json:1: not JSON: "},
      {"{\n\"uptime\": 1,\n\"uptime\": 2}", "state.json:3: not JSON: Duplicate key: 'uptime'"},
      {"{} {}", "state.json:1: not JSON: "},
      {"\x7f\x45LF\x01", "state.json:1: not JSON: "},
  });
  EXPECT_EQ(MessageFor(std::string(5000, '[')).find("state.json:1: not JSON: "), 0U);
}

TEST(ScenarioFile, UnknownMembersAreRefusedWithWhereTheyStand) {
  ExpectMessages({
      {"{\n  \"why\": \"x\",\n  \"upss\": {}\n}",
       "state.json:3: unknown member \"upss\"; known here: configuration, error, "},
      {"{\"ups\":\n{\"State\": 2}}", "state.json:2: unknown member \"ups.State\"; known here: "},
      {"{\"storage\": {\"volumes\": [\n{\"path\": \"/volume1\"},\n{\"free\": 1}]}}",
       "state.json:3: unknown member \"storage.volumes[1].free\"; known here: "},
      {"{\"expansionUnits\": {\"units\": [{\"power\": {\"words\": 3}}]}}",
       "state.json:1: unknown member \"expansionUnits.units[0].power.words\"; known here: "},
  });
}

TEST(ScenarioFile, ValuesOfTheWrongKindAreRefusedWithWhatTheyMustBe) {
  ExpectMessages({
      {"[]", "state.json:1: a scenario must be an object {...}"},
      {"{\n\"ups\": 3}", "state.json:2: \"ups\" must be an object {...}"},
      {"{\"storage\":\n{\"volumes\":\n{}}}", "state.json:3: \"storage.volumes\" must be a list"},
      {"{\"storage\": {\"volumes\": [7]}}",
       "state.json:1: \"storage.volumes[0]\" must be an object {...}"},
      {"{\"storage\": {\"disks\": null}}", "state.json:1: \"storage.disks\" must be a list"},
      {"{\"hardware\": {\"fanFailed\": \"yes\"}}",
       "state.json:1: \"hardware.fanFailed\" must be true or false"},
      {"{\"hardware\": {\"fanFailed\": null}}",
       "state.json:1: \"hardware.fanFailed\" must be true or false"},
      {"{\"hostName\": 7}", "state.json:1: \"hostName\" must be a text"},
      {"{\"externalVolumes\": {\"usb\": [{\"cardReader\": 1}]}}",
       "state.json:1: \"externalVolumes.usb[0].cardReader\" must be true or false"},
      {"{\"storage\": {\"volumes\": [{\"warningShare\": \"0.05\"}]}}",
       "state.json:1: \"storage.volumes[0].warningShare\" must be a number"},
      {"{\"configuration\": {\"defaults\": []}}",
       "state.json:1: \"configuration.defaults\" must be an object of texts"},
      {"{\"configuration\": {\"settings\":\n{\"maxdisks\": 0}}}",
       "state.json:2: \"configuration.settings.maxdisks\" must be a text, or null for none"},
      {"{\"san\": {\"outputText\": {}}}", "state.json:1: \"san.outputText\" must be a text"},
  });
}

TEST(ScenarioFile, NumbersOutsideTheirFieldAreRefusedWithItsRange) {
  ExpectMessages({
      {"{\"ups\": {\"connected\": 256}}",
       "state.json:1: \"ups.connected\" must be a whole number from 0 to 255"},
      {"{\"ups\": {\"state\": 2147483648}}",
       "state.json:1: \"ups.state\" must be a whole number from -2147483648 to 2147483647"},
      {"{\"ups\": {\"state\": 2.5}}", "state.json:1: \"ups.state\" must be a whole number"},
      {"{\"hardware\": {\"powerDetail\": -1}}",
       "state.json:1: \"hardware.powerDetail\" must be a whole number from 0 to 4294967295"},
      {"{\"externalVolumes\": {\"esata\": [{\"total\": 18446744073709551616}]}}",
       "state.json:1: \"externalVolumes.esata[0].total\" must be a whole number from 0 to "
       "18446744073709551615"},
      {"{\"uptime\": \"59\"}", "state.json:1: \"uptime\" must be a whole number"},
  });
}

TEST(ScenarioFile, WhatIsRightIsTakenOver) {
  const Machine machine = ParseScenario("state.json", R"(// a comment is welcome
{"uptime": null, "ups": {"state": -1}, "san": {"output": {"luns": []}}, "securityScanText": "{",
 "storage": {"volumes": [{"path": "/volume9", "total": 18446744073709551615}]},
 "configuration": {"defaults": {"maxdisks": "0", "supportsystempwarning": null}}})");
  EXPECT_FALSE(machine.uptime);
  EXPECT_EQ(machine.upsState, -1);
  EXPECT_EQ(machine.sanOutput, R"({"luns":[]})");
  EXPECT_EQ(machine.securityScan.Text(), "{");
  ASSERT_EQ(machine.volumes.size(), 1U);
  EXPECT_EQ(machine.volumes[0].total, 18446744073709551615U);
  EXPECT_EQ(machine.defaults, (decltype(machine.defaults){{"maxdisks", "0"}}));
  EXPECT_EQ(machine.usb.size(), 2U) << "what a scenario does not mention stays healthy";
}

std::string Refusal(const std::string& path) {
  try {
    LoadScenario(path);
  } catch (const ScenarioError& error) {
    return error.what();
  }
  return "accepted";
}

TEST(ScenarioFolder, IsReadAndRefusedByTheFileInIt) {
  const std::string& path = test_support::OwnFolder();
  const std::string file = path + "state.json";
  EXPECT_TRUE(Refusal(path).starts_with(file + ": no such file, or empty; "));
  EXPECT_TRUE(Refusal(path + "none").starts_with(path + "none: no such file, or empty; "));
  std::ofstream(file) << "";
  EXPECT_TRUE(Refusal(file).starts_with(file + ": no such file, or empty; "));
  std::ofstream(file) << "{\n\"ups\": {\"state\": \"low\"}}";
  EXPECT_TRUE(Refusal(path).starts_with(file + ":2: \"ups.state\" must be a whole number"));
  std::ofstream(file) << "{\"ups\": {\"state\": 3}}";
  EXPECT_EQ(LoadScenario(path).upsState, 3);
  EXPECT_EQ(LoadScenario(file).upsState, 3);
}

}  // namespace
}  // namespace simulator
