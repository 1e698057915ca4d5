// One word on a finding, and what the exit state says of an answer.
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

// "read", "failed" or "absent".
const char* NameSourceState(const VELASourceReport& source);

// How many sources were read, failed, and are not on this machine.
struct SourceCount {
  int read = 0, failed = 0, absent = 0;
  int Present() const { return read + failed; }
};
SourceCount CountSources(const std::vector<VELASourceReport>& sources);

ExitStatus ChooseExitStatus(Verdict verdict, const SourceCount& sources);

}  // namespace host
