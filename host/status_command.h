// vela-health status: the finding in words, what to do about it, and what was read.
#pragma once

#include "host/failure.h"
#include "host/session.h"

namespace vela::host {

// Prints to standard output. Throws Failure.
ExitStatus RunStatus(Session& session);

}  // namespace vela::host
