// One word on a finding, and what the exit status says of an answer.
#pragma once

#include <vector>

#include "host/answer/answer.h"
#include "host/text/failure.h"
#include "platform/status/source_status.h"

namespace host {

enum class Verdict { Danger, Warning, Notice, Well };

Verdict JudgeFinding(const Finding& finding);
// "danger", "warning", "notice" or "well".
const char* ToString(Verdict verdict);

// kIncomplete: nothing was found, and a source failed.
ExitStatus ChooseExitStatus(const Finding& finding, const std::vector<VELASourceReport>& sources);

}  // namespace host
