// All that this process started, wherever that went.
#pragma once

#include <sys/types.h>

#include <vector>

namespace linux_platform {

struct Process {
  pid_t pid, parent, group;
};

// The children of this process, theirs, and so on. As this process takes up orphans, that is
// all that was ever started below it and is not reaped.
std::vector<Process> ListDescendants();

// Stops all descendants and then kills them. A stopped process starts nothing and reaps nothing,
// and it keeps its place in the kernel's table: so even one that starts others without end comes
// to its own. The dead are left to be reaped.
void KillDescendants();

}  // namespace linux_platform
