// Machines at random, and the faults that can befall one.
#pragma once

#include <span>
#include <string>

#include "platform/simulator/machine.h"

namespace simulator {

// Only ever makes a machine worse; on a machine that lacks the part, nothing.
struct Fault {
  const char* name;
  void (*apply)(Machine& machine);
};

// Every fault that a checker tells of. Those that silence another finding are not here.
std::span<const Fault> Faults();

// How many a test tries: fewer where a sanitizer makes each of them slow.
#ifdef VELA_FEW_MACHINES
constexpr unsigned kRandomMachines = 40;
#else
constexpr unsigned kRandomMachines = 200;
#endif

struct RandomMachine {
  explicit RandomMachine(unsigned seed);  // the same machine for the same seed, always

  Machine machine;
  std::string state;  // in words: the seed, what the machine has and what befell it
};

}  // namespace simulator
