// How a program is started: by vela-supervise, which ends all that the program started.
//
// The supervisor is a program of its own because orphans come to the nearest ancestor that asks
// for them, and this process, somebody's server, must not ask. A socket joins the two, which is
// the supervisor's standard input:
//   it sends    an int: 0, or the error number with which the program did not start
//               an int: the program's wait status, once it has ended
//   it gets     a byte: everything ends at once
//               the end: the program may end by itself within the grace period, then all ends.
//               So all ends, too, when this process does, however it does.
// It ends when nothing is left.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "platform/linux/base/descriptor.h"

namespace linux_platform {

// The word before the program that makes its standard error join its output.
constexpr const char* kJoinErrors = "errors";

struct SupervisedOutput {
  int descriptor;    // above the standard ones
  bool joinsErrors;  // else what the program says on standard error is dropped
};

// Starts `arguments` under a supervisor, with their output to `output`. `line` becomes this
// process's end of the socket, `pid` the supervisor's. 0, or an error number; then `reason` says
// what could not be started.
int StartSupervised(const std::vector<std::string>& arguments, std::chrono::milliseconds grace,
                    SupervisedOutput output, Descriptor& line, pid_t& pid, std::string& reason);

}  // namespace linux_platform
