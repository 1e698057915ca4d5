// The real program over the real module and simulator.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/program.h"
#include "tests/support/own_folder.h"

namespace host::test {
namespace {

TEST(Program, TheExitStateTellsTheVerdict) {
  const struct {
    const char *name, *state;
    int status;
    const char* words;
  } cases[] = {
      {"well", R"({"why": "."})", 0, "Healthy: Everything is working well."},
      {"fan", R"({"why": ".", "hardware": {"fanFailed": true}})", 1,
       "Warning: A system fan has failed."},
      {"scan", R"({"why": ".", "securityScan": {"sysStatus": "danger"}})", 2,
       "Danger: The security scan found"},
      {"ups", R"({"why": ".", "ups": {"fails": true}})", 3, "Healthy as far as could be read."}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Outcome outcome = RunProgram({"--scenario", Scenario(c.name, c.state), "--lang", "en"});
    EXPECT_EQ(outcome.status, c.status) << outcome.err;
    EXPECT_TRUE(Contains(outcome.out, c.words)) << outcome.out;
    EXPECT_EQ(Contains(outcome.out, "What to do:"), c.status == 1 || c.status == 2) << outcome.out;
    EXPECT_EQ(Contains(outcome.out, "Could not read UPS: "), c.status == 3) << outcome.out;
  }
}

TEST(Program, JsonIsTheDocumentAndNothingElse) {
  const Outcome outcome = RunProgram({"status", "--json", "--scenario", "healthy"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out.find('\n'), outcome.out.size() - 1);
  EXPECT_TRUE(outcome.out.starts_with(R"({"hostname":"vela","interfaces":[{)")) << outcome.out;
  EXPECT_TRUE(Contains(outcome.out, R"("id":"system_health","priority":40.0,"type":2})"));
  EXPECT_EQ(outcome.err, "");
}

TEST(Program, WhatCannotBeAskedIsSaidWithWhatToDo) {
  const std::string text = test_support::OwnFolder() + "text.so";
  std::ofstream(text) << "not a library";
  const std::string bad = Scenario("bad", "{\"why\": \".\",\n \"fanFailed\": true}");
  const struct {
    std::vector<std::string> arguments;
    int status;
    std::vector<std::string> words;
  } cases[] = {
      {{"--platform", "/nowhere/x.so"}, 69, {"the platform /nowhere/x.so", "no such file"}},
      {{"--platform", text}, 69, {"the platform " + text, "not a shared library"}},
      {{"--platform", "simulator", "--module", "/nowhere/m.so"}, 69, {"the module /nowhere/m.so"}},
      {{"--platform", "simulator", "--module", VELA_SIMULATOR}, 69, {"GetAPITable", "--module"}},
      {{"--platform", "simulator", "--module", VELA_HALF_MODULE}, 69, {"VELANobodyHasThis"}},
      {{"--platform", VELA_HALF_PLATFORM}, 69, {"the module", "which it needs"}},
      {{"--scenario", ""}, 64, {"--scenario", "no name"}},
      {{"--scenario", "no-such-machine"}, 66, {"no-such-machine", "All names: ls ", "scenarios"}},
      {{"--scenario", "cpu-fan"}, 66, {"There is: cpu-fan-failed, "}},
      {{"--scenario", bad}, 66, {"state.json:2", "fanFailed"}},
      {{"--lang", "tlh"}, 64, {"tlh", "--lang"}},
      {{"--wrong"}, 64, {"--wrong", "Usage: vela-health [", "Subcommands: status ", "--help"}},
      {{"diff", "healthy"}, 64, {"B is required", "Usage: vela-health diff [OPTIONS] A B"}},
      {{"serve", "--listen", "0.0.0.0:0"}, 64, {"0.0.0.0", "--allow-remote"}}};
  for (const auto& c : cases) {
    const Outcome outcome = RunProgram(c.arguments);
    SCOPED_TRACE(outcome.err);
    EXPECT_EQ(outcome.status, c.status);
    EXPECT_EQ(outcome.out, "");
    for (const std::string& words : c.words) {
      EXPECT_TRUE(Contains(outcome.err, words)) << words;
    }
  }
}

TEST(Program, LibrariesMayBeNamedInTheEnvironment) {
  EXPECT_EQ(RunProgram({}, {"VELA_HEALTH_PLATFORM=simulator"}).status, 0);
  EXPECT_EQ(
      RunProgram({}, {"VELA_HEALTH_PLATFORM=simulator", "VELA_HEALTH_MODULE=/nowhere"}).status, 69);
}

TEST(Program, DiffTellsWhetherTheVerdictChanges) {
  const std::string saved = test_support::OwnFolder() + "saved.json";
  std::ofstream(saved) << RunProgram({"--json", "--scenario", "volume-low"}).out;
  const struct {
    std::string a, b;
    int status;
    const char* words;
  } cases[] = {
      {"healthy", "volume-low", 1, "The verdict changes\n  healthy: Healthy: Everything"},
      {"volume-low", "healthy", 0, "The verdict changes"},
      {saved, "volume-low", 1, "Nothing changes: Notice: Volume 1: almost full"},
      {"system-fan-failed", "fan-failed-and-cluster-trouble", 1,
       "Nothing changes: Warning: A system fan has failed.\n+ Warning: The high-availability"},
      {"healthy", "no-such", 66, ""}};
  for (const auto& c : cases) {
    const Outcome outcome = RunProgram({"diff", "--lang", "en", c.a, c.b});
    SCOPED_TRACE(c.a + " " + c.b + outcome.out + outcome.err);
    EXPECT_EQ(outcome.status, c.status);
    EXPECT_TRUE(Contains(outcome.out, c.words));
  }
}

TEST(Program, TheFindingsPageIsUpToDate) {
  std::stringstream page;
  page << std::ifstream(VELA_FINDINGS_PAGE).rdbuf();
  EXPECT_EQ(RunProgram({"findings", "--markdown", "--lang", "en"}).out, page.str())
      << "run: vela-health findings --markdown --lang en > docs/findings.md";
}

}  // namespace
}  // namespace host::test
