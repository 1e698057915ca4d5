// The complete answer for programs: the document of "get", and all that is told beside it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/answer/evidence.h"
#include "host/answer/explanation.h"
#include "host/answer/notes.h"

namespace host {

// What one look at the machine brought.
struct CompleteAnswer {
  std::int64_t time;  // when the machine was asked, in seconds since 1970
  Explanation explanation;
  Evidence evidence;
  Notes notes;
  std::int64_t snapshotTime = -1;  // when the collector last looked, like `time`; -1: never
};

// Asks the machine once, for everything. Throws what Host::Ask throws.
CompleteAnswer AskForEverything(const Host& host, const SimulatedMachine& machine);

// The checks with a finding, the most urgent first; the document's own alone where the module that
// explains is not loaded.
std::vector<CheckerResult> RankFindings(const Explanation& explanation);

// JSON on one line, in the words of one language; host/www/openapi.json describes its members.
std::string WriteCompleteAnswer(const CompleteAnswer& complete, const Texts& texts);

}  // namespace host
