// The notes beside an answer, in the words of one language.
#pragma once

#include <vector>

#include "host/answer/sources.h"
#include "host/text/texts.h"
#include "platform/status/notes.h"

namespace host {

using Notes = std::vector<VELANote>;

// "DIMM_A1 corrected 12 errors".
std::string FormatNote(const VELANote& note, const Texts& texts);

// One for each note, with the command that shows it: "Note: DIMM_A1 corrected 12 errors". A key
// without a text is told with its figures.
std::vector<ToldLine> FormatNotes(const Notes& notes, const Texts& texts);

}  // namespace host
