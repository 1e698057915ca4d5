// vela-health report FILE: the answer as one page.
#pragma once

#include <string>

#include "host/cli/session.h"
#include "host/text/failure.h"

namespace host {

// "-" is standard output. A file that is there is replaced only when it is a report, too.
// Throws Failure, and then the file is what it was.
ExitStatus RunReport(Session& session, const std::string& file);

}  // namespace host
