// What is told beside an answer, as lists for programs: the values as the platform told them, and
// their words in one language. A member that is not known is left out.
#pragma once

#include <string_view>

#include <json/value.h>

#include "host/answer/evidence.h"
#include "host/answer/notes.h"
#include "host/answer/sources.h"

namespace host {

Json::Value ListSources(const SourceReports& sources, const Texts& texts);
Json::Value ListParts(const Parts& parts, const Texts& texts);
Json::Value ListEvidence(const Evidence& evidence, const Texts& texts);
Json::Value ListNotes(const Notes& notes, const Texts& texts);

// Why the check of that name has its finding: what is told of each cause, its commands, and the
// names of the parts that it is about.
Json::Value ListCauses(const Evidence& evidence, std::string_view check, const Texts& texts);

}  // namespace host
