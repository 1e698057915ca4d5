// One word on a finding, and what the exit status says of an answer.
#pragma once

#include "host/answer/answer.h"
#include "host/answer/sources.h"
#include "host/text/failure.h"

namespace host {

// Unknown: nothing was found, and something was not looked at. No finding has it, but an answer.
enum class Verdict { Danger, Warning, Notice, Well, Unknown };

Verdict JudgeFinding(const Finding& finding);
Verdict JudgeAnswer(const Finding& finding, const SourceReports& sources);
// "danger", "warning", "notice", "well" or "unknown".
const char* ToString(Verdict verdict);

// kIncomplete: of an answer that is Unknown.
ExitStatus ChooseExitStatus(const Finding& finding, const SourceReports& sources);

}  // namespace host
