// What the sources beside an answer say: how many were read, and which failed and why.
#pragma once

#include <string>
#include <vector>

#include "host/text/texts.h"
#include "platform/status/source_status.h"

namespace host {

// How many sources were read, failed, and are not on this machine.
struct SourceCount {
  int read = 0, failed = 0, absent = 0;
  int Present() const { return read + failed; }
};
SourceCount CountSources(const std::vector<VELASourceReport>& sources);

// "read", "failed" or "absent".
const char* NameSourceState(const VELASourceReport& source);

// "9 of 10 sources read, 1 not on this machine".
std::string FormatSourcesLine(const std::vector<VELASourceReport>& sources, const Texts& texts);
// One line for each source that failed: "Could not read SAN: ...".
std::vector<std::string> FormatFailedSources(const std::vector<VELASourceReport>& sources,
                                             const Texts& texts);

}  // namespace host
