// vela-health findings: the catalogue.
#pragma once

#include "host/failure.h"
#include "host/session.h"

namespace vela::host {

// On the terminal, or as a Markdown page; as JSON with --json.
ExitStatus RunFindings(Session& session, bool markdown);

}  // namespace vela::host
