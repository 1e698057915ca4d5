// A process with all that it started, wherever that went.
#pragma once

#include <sys/types.h>

namespace linux_platform {

// Kills the group that `leader` leads, and the leader's descendants that left the group
// (setsid), as far as their parents are still there: an orphan in a session of its own is
// nobody's child any more. `leader` is a child of this process that was not reaped yet.
void KillWithDescendants(pid_t leader);

}  // namespace linux_platform
