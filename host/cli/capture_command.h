// vela-health capture DIR: this machine as a scenario.
#pragma once

#include <string>

#include "host/cli/session.h"
#include "host/text/failure.h"

namespace host {

// Makes the folder with state.json, whose `why` is the line for people (empty: when and what
// was captured), and expected.json, the answer. Throws Failure, and then there is no folder.
ExitStatus RunCapture(Session& session, const std::string& folder, const std::string& why);

}  // namespace host
