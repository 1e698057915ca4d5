// What a monitoring system reads of a plug-in: one line of standard output, and the exit status.
#pragma once

#include <string>

#include "host/text/failure.h"

namespace host {

// Whether the command of these arguments is "check". Known before they are understood, since what
// is wrong with them must be told on a plug-in's line, too.
bool AsksForCheck(int count, const char* const* arguments);

// Shortened, without what would end the line or begin the performance data.
std::string MakeCheckLine(const std::string& text);

// Prints the line of a check that could not be made, whose exit status is kIncomplete. Says on
// standard error when even that cannot be written.
ExitStatus TellCheckFailure(const std::string& what);

}  // namespace host
