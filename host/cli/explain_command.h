// vela-health explain: why this finding, and why not another.
#pragma once

#include "host/cli/session.h"
#include "host/text/failure.h"

namespace host {

ExitStatus RunExplain(Session& session);

}  // namespace host
