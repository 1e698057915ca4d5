// A program run to its end within bounds, its output and its verdict.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/base/deadline.h"
#include "platform/linux/base/process.h"

namespace linux_platform {

enum class ProgramEnd {
  Exited,      // `status` is its exit status
  NotStarted,  // not there, or not to be started
  Late,        // it had its time, and hangs
  NoTurn,      // other sources have used up the request's time
  Broken,      // ended by a signal, or printed too much
};

// Runs `arguments`, the program's path below the root, and keeps what it prints in
// `output`. `bounds.time` shrinks to what `budget` leaves. `reason` says what else than
// Exited happened.
ProgramEnd RunProgram(std::vector<std::string> arguments, Bounds bounds, TimeBudget& budget,
                      std::string& output, int& status, std::string& reason);

}  // namespace linux_platform
