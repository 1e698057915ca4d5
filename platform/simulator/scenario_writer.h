// A machine as a scenario file: only what differs from a healthy one.
#pragma once

#include <string>

#include "platform/simulator/machine.h"

namespace simulator {

// The text of a state.json; LoadScenario makes a machine of it that answers the same. `why` is
// the line for people that every scenario has.
std::string WriteScenario(const Machine& machine, const std::string& why);

}  // namespace simulator
