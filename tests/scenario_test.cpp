// Every scenario through the shipped module: the whole answer, or the test fails.
#include <dlfcn.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/simulator/simulator.h"
#include "platform/status/source_status.h"
#include "tests/support/recorded_response.h"
#include "tests/support/scenario_folders.h"

namespace {

std::vector<std::string> systemLog;

}  // namespace

// What the module writes to the system log arrives here.
#pragma GCC visibility push(default)
extern "C" void syslog(int, const char* format, ...) {
  char line[1024];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  systemLog.emplace_back(line);
}
#pragma GCC visibility pop

namespace {

namespace fs = std::filesystem;

const VELA::APIMethodRow& ShippedMethod() {
  static const VELA::APIMethodRow* table = [] {
    void* module = dlopen(VELA_MODULE, RTLD_NOW);
    if (module == nullptr) throw std::runtime_error(dlerror());
    auto getTable = reinterpret_cast<const VELA::APIMethodRow* (*)()>(dlsym(module, "GetAPITable"));
    return getTable();
  }();
  return table[0];
}

using Machine = std::unique_ptr<VELASimulatedMachine, decltype(&VELASimulatorClose)>;

Machine Open(const fs::path& scenario) {
  char message[512] = {};
  Machine machine(VELASimulatorOpen(scenario.c_str(), message, sizeof message), VELASimulatorClose);
  EXPECT_NE(machine, nullptr) << message;
  return machine;
}

Json::Value Get(VELASimulatedMachine* machine) {
  VELA::RecordedResponse response;
  systemLog.clear();
  VELAPlatformSourcesReset();
  VELASimulatorEnter(machine);
  ShippedMethod().handler(nullptr, response.AsResponse());
  VELASimulatorEnter(nullptr);
  EXPECT_EQ(response.answers, 1);
  EXPECT_EQ(VELASimulatorOwed(machine), 0) << "a platform resource was not given back";
  return response.document;
}

// Of the sources that the last request asked.
std::vector<std::string> FailedSources() {
  VELASourceReport reports[32];
  const int count = VELAPlatformSources(reports, 32);
  std::vector<std::string> failed;
  for (int i = 0; i < count; ++i)
    if (reports[i].state == 2)
      failed.push_back(std::string(reports[i].name) + ": " + reports[i].reason);
  return failed;
}

class Scenario : public testing::TestWithParam<std::string> {
 protected:
  const fs::path folder_ = scenarios::Folder(GetParam());
};

TEST_P(Scenario, IsAnsweredAsExpected) {
  const Machine machine = Open(folder_);
  ASSERT_NE(machine, nullptr);
  const Json::Value answer = Get(machine.get());
  const Json::Value expected = scenarios::Read(folder_ / "expected.json");
  EXPECT_EQ(answer, expected) << "answered: " << answer.toStyledString()
                              << "log: " << testing::PrintToString(systemLog);
  EXPECT_NE(scenarios::Read(folder_ / "state.json")["why"].asString(), "")
      << "a scenario says why it is there";

  if (GetParam().starts_with("healthy")) {
    EXPECT_EQ(expected["rule"]["id"], "system_health") << "a healthy machine alarms nobody";
    EXPECT_EQ(systemLog, std::vector<std::string>()) << "and has nothing to log";
    EXPECT_EQ(FailedSources(), std::vector<std::string>()) << "and all of it can be read";
  }
  if (GetParam().starts_with("failing")) {
    EXPECT_FALSE(systemLog.empty() && FailedSources().empty()) << "nothing fails in silence";
  }
}

TEST(ScenarioOpening, GivesNoMachineForABadScenario) {
  char message[512] = {};
  EXPECT_EQ(VELASimulatorOpen(VELA_SCENARIOS, message, sizeof message), nullptr);
  EXPECT_EQ(std::string(message).find(VELA_SCENARIOS "/state.json: no such file"), 0U) << message;
}

INSTANTIATE_TEST_SUITE_P(All, Scenario, testing::ValuesIn(scenarios::Names()),
                         [](const auto& scenario) {
                           std::string name = scenario.param;
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

}  // namespace
