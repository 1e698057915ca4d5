// Machines at random, and the faults that can befall one: tests/fixtures/machines.json.
#pragma once

#include <json/writer.h>

#include "platform/simulator/machine.h"

namespace simulator {

// What each fault adds to a scenario's state, by its name. A fault only ever makes a machine
// worse. Those that silence another finding are not here.
const Json::Value& Faults();

// The machine of a scenario's state that this fault befalls, too.
Machine MakeWorse(Json::Value state, const Json::Value& fault);

// How many a test tries: fewer where a sanitizer makes each of them slow.
#ifdef VELA_FEW_MACHINES
constexpr unsigned kRandomMachines = 40;
#else
constexpr unsigned kRandomMachines = 200;
#endif

struct RandomMachine {
  explicit RandomMachine(unsigned seed);  // the same machine for the same seed, always

  Json::Value state;  // as a scenario has it
  Machine machine;
};

}  // namespace simulator
