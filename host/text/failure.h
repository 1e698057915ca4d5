// What ends a command early.
#pragma once

#include <stdexcept>
#include <string>

#include "common/sanitize.h"

namespace host {

// The program's exit statuses. 64 and up are those of sysexits.h: the question could
// not be asked, so nothing is said about the machine's health.
enum ExitStatus : int {
  kHealthy = 0,      // the healthy default, every source read or not on this machine
  kAttention = 1,    // a warning or a notice
  kUndelivered = 1,  // of "notify": a hook did not take what it was told
  kDanger = 2,       // act now
  kIncomplete = 3,   // nothing was found, but something was not looked at
  kUsage = 64,
  kNoInput = 66,      // a scenario or saved answer that cannot be used
  kUnavailable = 69,  // a library that cannot be loaded, an address that is taken
  kInternal = 70,
  kCannotWrite = 73,
  kBusy = 75,  // another one is at it
};

// Its words say what was tried, what went wrong and what to do. They may quote anybody.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& words)
      : std::runtime_error(common::Sanitize(words)), status_(status) {}
  ExitStatus Status() const { return status_; }

 private:
  ExitStatus status_;
};

}  // namespace host
