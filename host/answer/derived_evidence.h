// Causes that a check's own inputs name, where the platform told none: a LUN, a volume with its
// figures, a disk. Whatever the platform, an answer that names them is not nameless.
#pragma once

#include <vector>

#include "host/answer/evidence.h"
#include "host/answer/explanation.h"
#include "host/loader/platform.h"

namespace host {

// Parts and evidence of this thread's request, with what the checks' inputs add to them.
Evidence GatherEvidence(const Platform& platform, const std::vector<CheckerResult>& checkers);

// Adds causes of each finding that has none yet.
void AddDerivedEvidence(const std::vector<CheckerResult>& checkers, Evidence& evidence);

}  // namespace host
