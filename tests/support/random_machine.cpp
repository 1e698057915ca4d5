#include "tests/support/random_machine.h"

#include <algorithm>
#include <random>

#include "platform/simulator/scenario.h"
#include "tests/support/scenario_folders.h"

namespace simulator {
namespace {

const Json::Value& Fixture() {
  static const Json::Value fixture =
      scenarios::Read(scenarios::Folder("../tests/fixtures/machines.json"));
  return fixture;
}

// Lists are joined. Of two values the greater stays, which is the worse one in the fixture.
void Merge(Json::Value& state, const Json::Value& more) {
  if (state.isNull()) state = Json::Value(more.type());
  if (more.isObject()) {
    for (const std::string& name : more.getMemberNames()) Merge(state[name], more[name]);
  } else if (more.isArray()) {
    for (const Json::Value& each : more) state.append(each);
  } else {
    state = std::max(state, more);
  }
}

}  // namespace

const Json::Value& Faults() { return Fixture()["faults"]; }

Machine MakeWorse(Json::Value state, const Json::Value& fault) {
  Merge(state, fault);
  return ParseScenario("random", state.toStyledString());
}

RandomMachine::RandomMachine(unsigned seed) {
  std::mt19937 random(seed);
  state["hostName"] = "host" + std::to_string(seed);
  state["uptime"] = seed;
  for (const Json::Value& part : Fixture()["parts"])
    Merge(state, part[static_cast<Json::ArrayIndex>(random()) % part.size()]);
  const auto health = 2 + random() % 30;
  for (const Json::Value& fault : Faults())
    if (random() % health == 0) Merge(state, fault);
  machine = MakeWorse(state, Json::objectValue);
}

}  // namespace simulator
