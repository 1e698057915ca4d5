// All that this process started, wherever that went.
#pragma once

#include <sys/types.h>

namespace linux_platform {

// Stops the children of this process, theirs, and so on, and then kills them. As this process
// takes up orphans, that is all that was ever started below it. A stopped process starts nothing
// and reaps nothing, and it keeps its place in the kernel's table: so even one that starts others
// without end comes to its own. The dead are left to be reaped. `leader` leads the group that
// most of them are in; -1 when it was reaped.
void KillDescendants(pid_t leader);

}  // namespace linux_platform
