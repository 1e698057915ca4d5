// A platform that stands in front of another: it hands every question on, and keeps what was
// answered as a simulated machine. Found with dlsym.
#pragma once

#include <cstddef>

struct VELAOperatingSystem;

extern "C" {

#pragma GCC visibility push(default)

// Records one request over the platform library at `path`, which is open already, so that no
// other library found its functions. `system` answers for the C library.
void VELARecorderStart(const char* path, const VELAOperatingSystem* system);
// Hands on to `system`, and keeps its answers, too.
const VELAOperatingSystem* VELARecorderOperatingSystem(void);
// The machine as the module saw it since the start: the text of a state.json, valid until the
// next call. Ask in the thread of the request: what its sources said is that thread's. Its
// notes, parts and evidence are looked for now.
const char* VELARecorderState(const char* why);

#pragma GCC visibility pop
}
