// Every machine through the shipped module: the whole answer and the log, or the test fails.
#include <dlfcn.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/simulator/simulator.h"
#include "platform/status/source_status.h"
#include "tests/support/recorded_response.h"
#include "tests/support/scenario_folders.h"

namespace {

Json::Value systemLog(Json::arrayValue);

}  // namespace

// What the module writes to the system log arrives here: "3 " before an error, "7 " before what
// is for debugging. Without the line of module/, which is where the code happens to stand.
#pragma GCC visibility push(default)
extern "C" void syslog(int priority, const char* format, ...) {
  char line[1024];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  static const std::regex position("^(module/[^:]*:)\\d+");
  systemLog.append(std::to_string(priority) + " " + std::regex_replace(line, position, "$1"));
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

// The answer of the machine at `state`, with the log as one more member.
Json::Value Ask(const fs::path& state) {
  char message[512] = {};
  const Machine machine(VELASimulatorOpen(state.c_str(), message, sizeof message),
                        VELASimulatorClose);
  EXPECT_NE(machine, nullptr) << message;
  if (machine == nullptr) return {};
  VELA::RecordedResponse response;
  systemLog.clear();
  VELAPlatformSourcesReset();
  VELASimulatorEnter(machine.get());
  ShippedMethod().handler(nullptr, response.AsResponse());
  VELASimulatorEnter(nullptr);
  EXPECT_EQ(response.answers, 1);
  EXPECT_EQ(VELASimulatorOwed(machine.get()), 0) << "a platform resource was not given back";
  response.document["log"] = systemLog;
  return response.document;
}

// Of the sources that the last request asked.
std::vector<std::string> FailedSources() {
  VELASourceReport reports[32];
  const int count = VELAPlatformSources(reports, 32);
  std::vector<std::string> failed;
  for (int i = 0; i < count; ++i)
    if (reports[i].state > source_status::State::Read)
      failed.push_back(std::string(reports[i].name) + ": " + reports[i].reasons[0].text);
  return failed;
}

void ExpectAnswer(const std::string& name, const fs::path& state, const Json::Value& differing) {
  const Json::Value expected = scenarios::WholeAnswer(differing);
  Json::Value answer = Ask(state);
  if (expected["log"].isNull()) answer["log"] = Json::Value();
  EXPECT_EQ(answer, expected);
  if (name.starts_with("healthy")) {
    EXPECT_EQ(expected["rule"]["id"], "system_health") << "a healthy machine alarms nobody";
    EXPECT_TRUE(expected["log"].empty()) << "and has nothing to log";
    EXPECT_EQ(FailedSources(), std::vector<std::string>()) << "and all of it can be read";
  }
  if (name.starts_with("failing")) {
    EXPECT_FALSE(expected["log"].empty() && FailedSources().empty()) << "nothing fails in silence";
  }
}

class Scenario : public testing::TestWithParam<std::string> {};

TEST_P(Scenario, IsAnsweredAsExpected) {
  const fs::path folder = scenarios::Folder(GetParam());
  ExpectAnswer(GetParam(), folder, scenarios::Read(folder / "expected.json"));
  EXPECT_NE(scenarios::Read(folder / "state.json")["why"].asString(), "")
      << "a scenario says why it is there";
}

INSTANTIATE_TEST_SUITE_P(All, Scenario, testing::ValuesIn(scenarios::Names()),
                         [](const auto& scenario) {
                           std::string name = scenario.param;
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

TEST(Boundaries, AreAnsweredAsExpected) {
  for (const auto& [name, state, expected] : scenarios::Boundaries()) {
    SCOPED_TRACE(name);
    ExpectAnswer(name, state, expected);
  }
}

}  // namespace
