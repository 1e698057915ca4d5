// What the simulator offers its host, found with dlsym, beside the platform interface.
#pragma once

#include <cstddef>

struct sysinfo;

extern "C" {

#pragma GCC visibility push(default)

struct VELASimulatedMachine;

// Loads a scenario: a folder that holds state.json, or such a file. Null on failure,
// with `message` saying file, line and member. The machine may serve many threads.
VELASimulatedMachine* VELASimulatorOpen(const char* path, char* message, std::size_t capacity);
void VELASimulatorClose(VELASimulatedMachine* machine);
// Makes `machine` the one that answers this thread; null: the healthy machine.
void VELASimulatorEnter(VELASimulatedMachine* machine);
// How many lists, streams and objects callers of `machine` have not given back.
int VELASimulatorOwed(const VELASimulatedMachine* machine);

// The module asks the C library for the host name, the uptime and the bytes of the
// security-scan result. An executable that exports these three functions forwards
// them here, so that the simulated machine answers for those, too.
struct VELAOperatingSystem {
  int (*gethostname)(char* name, std::size_t size);
  int (*sysinfo)(struct sysinfo* record);
  // -2: not a file of the simulated machine; otherwise as open(2) for reading.
  int (*open)(const char* path);
};
const VELAOperatingSystem* VELAPlatformOperatingSystem(void);

#pragma GCC visibility pop
}
