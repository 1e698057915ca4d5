// Starts a program without a shell, and with nothing of this process.
#pragma once

#include <sys/types.h>

#include <chrono>

#include "platform/linux/base/descriptor.h"

namespace linux_platform {

struct SpawnSettings {
  int input = -1;              // becomes standard input; -1: /dev/null
  int output = -1;             // becomes standard output
  bool hasOwnSession = false;  // false: only a process group of its own
  bool joinsErrors = false;    // standard error goes the way of standard output; else it is dropped
};

// Starts `argv[0]`, a path taken as it is, as the leader of its own group, with every signal at
// its default, none blocked and no descriptor but those of `settings`, which must lie above the
// standard ones. 0, or an error number. posix_spawn shares this
// process's memory until the program runs, so the cost does not depend on its size.
int Spawn(char* const* argv, char* const* environment, const SpawnSettings& settings, pid_t& pid);

// The same descriptor, or a copy above the standard ones where it is one of them, as in a
// process that has closed its own. Closes on exec.
Descriptor AboveStandard(Descriptor descriptor);

// Waits until the child is dead and meanwhile continues it, should anybody stop it. Leaves it to
// be reaped: while it is there, no other process can take its number, which is also its group's.
bool AwaitDeath(pid_t pid, std::chrono::milliseconds bound);

}  // namespace linux_platform
