// vela-health explain: why this finding, and why not another.
#pragma once

#include "host/failure.h"
#include "host/session.h"

namespace vela::host {

ExitStatus RunExplain(Session& session);

}  // namespace vela::host
