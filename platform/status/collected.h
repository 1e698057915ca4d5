// When those parts of an answer were read that only a collector may read.
#pragma once

#include <cstdint>

// --- The border to the host, found with dlsym. A platform may lack it.

extern "C" {
// Seconds since 1970 when the collector last wrote what it had found on the machine of this
// thread's request; -1: it never did since the machine started.
__attribute__((visibility("default"))) std::int64_t VELAPlatformSnapshotTime();
}
