// vela-health report FILE: the answer as one page.
#pragma once

#include <string>

#include "host/failure.h"
#include "host/session.h"

namespace vela::host {

// "-" is standard output. A file that is there is replaced only when it is a report, too.
// Throws Failure, and then the file is what it was.
ExitStatus RunReport(Session& session, const std::string& file);

}  // namespace vela::host
