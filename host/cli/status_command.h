// vela-health status: the finding in words, what to do about it, and what was read.
#pragma once

#include "host/cli/session.h"
#include "host/text/failure.h"

namespace host {

// Prints to standard output. Throws Failure.
ExitStatus RunStatus(Session& session);

}  // namespace host
