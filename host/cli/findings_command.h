// vela-health findings: the catalogue.
#pragma once

#include "host/cli/session.h"
#include "host/text/failure.h"

namespace host {

// On the terminal, or as a Markdown page; as JSON with --json.
ExitStatus RunFindings(Session& session, bool markdown);

}  // namespace host
