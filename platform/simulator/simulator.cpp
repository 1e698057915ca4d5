#include "platform/simulator/simulator.h"

#include <cstdio>
#include <exception>

#include "platform/simulator/machine.h"
#include "platform/simulator/scenario.h"

struct VELASimulatedMachine {
  simulator::Machine machine;
};

VELASimulatedMachine* VELASimulatorOpen(const char* path, char* message, std::size_t capacity) {
  try {
    return new VELASimulatedMachine{simulator::LoadScenario(path)};
  } catch (const std::exception& error) {
    std::snprintf(message, capacity, "%s", error.what());
    return nullptr;
  }
}

void VELASimulatorClose(VELASimulatedMachine* machine) { delete machine; }

void VELASimulatorEnter(VELASimulatedMachine* machine) {
  simulator::Enter(machine != nullptr ? &machine->machine : nullptr);
}

int VELASimulatorOwed(const VELASimulatedMachine* machine) {
  const auto& ledger = machine->machine.ledger;
  return ledger.lists + ledger.streams + ledger.objects;
}
