#include "platform/simulator/simulator.h"

#include <cstdio>
#include <exception>

#include "platform/simulator/machine.h"
#include "platform/simulator/scenario.h"
#include "platform/status/collected.h"
#include "platform/status/notes.h"

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

int VELAPlatformNotes(VELANote* notes, int capacity) {
  for (const simulator::StatedNote& note : simulator::Simulated().notes)
    source_status::AddNote(note.key.c_str(), note.part, note.figure, note.mark,
                           note.command.c_str());
  return source_status::CopyNotes(notes, capacity);
}

std::int64_t VELAPlatformSnapshotTime() { return simulator::Simulated().snapshotTime; }

void VELAPlatformParts(VELATakePart take, void* taker) {
  for (const VELAPart& part : simulator::Simulated().parts) take(taker, &part);
}

void VELAPlatformEvidence(VELATakeEvidence take, void* taker) {
  for (const VELAEvidence& evidence : simulator::Simulated().evidence) take(taker, &evidence);
}

int VELASimulatorOwed(const VELASimulatedMachine* machine) {
  const auto& ledger = machine->machine.ledger;
  return ledger.lists + ledger.streams + ledger.objects;
}
