// vela-health diff A B: the verdicts of two machines side by side.
#pragma once

#include <string>

#include "host/cli/session.h"
#include "host/text/failure.h"

namespace host {

// Each is a scenario or a file with a saved answer. The exit state is B's. Throws Failure.
ExitStatus RunDiff(Session& session, const std::string& a, const std::string& b);

}  // namespace host
