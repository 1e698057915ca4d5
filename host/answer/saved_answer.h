// An answer that was saved: the document of "get", or the complete answer with all that was told
// beside it.
#pragma once

#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "host/answer/explanation.h"
#include "host/answer/parts.h"

namespace host {

struct SavedAnswer {
  Finding finding;
  // Only of a complete answer.
  std::vector<CheckerResult> checkers;
  SourceReports sources;
  Parts parts;
  std::list<std::string> names;  // of the sources, which these point to
};

// Throws Failure(kNoInput) naming what is wrong with it.
SavedAnswer ParseSavedAnswer(std::string_view document);

}  // namespace host
