// The line under an answer that says how much of the machine it rests on.
#pragma once

#include <string>
#include <vector>

#include "host/text/texts.h"
#include "platform/status/source_status.h"

namespace host {

// "9 of 10 sources read, 1 not on this machine".
std::string FormatSourcesLine(const std::vector<VELASourceReport>& sources, const Texts& texts);
// One line for each source that failed: "Could not read SAN: ...".
std::vector<std::string> FormatFailedSources(const std::vector<VELASourceReport>& sources,
                                             const Texts& texts);

}  // namespace host
