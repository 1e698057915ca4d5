// One question to a NUT server on this machine.
#pragma once

#include <chrono>
#include <string>

#include "platform/linux/ups/ups_status.h"

namespace linux_platform {

enum class NutAnswer {
  Read,
  NoServer,     // nothing listens there
  Refused,      // no such UPS, no driver, or an answer that is none
  Late,         // nothing whole by the deadline
  Unsupported,  // without libupsclient, built or installed
};

// Asks the server at `address` for the status words of its UPS, over a connection of its
// own. `reason` says what else than Read happened. Raises no signal; may be called from
// several threads.
NutAnswer ReadUpsStatus(const UpsAddress& address, std::chrono::steady_clock::time_point deadline,
                        std::string& words, std::string& reason);

}  // namespace linux_platform
