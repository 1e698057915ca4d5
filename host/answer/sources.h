// What the sources beside an answer say: how many were read, and of the others which, why, and
// what to do about it.
#pragma once

#include <string>
#include <vector>

#include "host/text/texts.h"
#include "platform/status/source_status.h"

namespace host {

using SourceReports = std::vector<VELASourceReport>;

// There is something, and nobody has looked at it: failed and unwatched count alike.
bool IsUnread(const VELASourceReport& source);

// "9 of 10 sources read, 1 not on this machine".
std::string FormatSourcesLine(const SourceReports& sources, const Texts& texts);

// "UPS", in the reader's language.
std::string NameSource(const VELASourceReport& source, const Texts& texts);

// "disks, UPS".
std::string JoinNames(const std::vector<std::string>& names, const Texts& texts);

// Stands for the reasons that a report had no place for.
constexpr const char* kMoreReasons = "and more";

// What is told beside the answer.
struct ToldLine {
  std::string text;     // "Nobody watches SMART: smartd is not installed"
  std::string command;  // what mends it, or shows it: "apt install smartmontools"; may be empty
};
// One for each reason of a source that was not read, whose owner accepts that, or that was read
// and has something to mend.
std::vector<ToldLine> FormatSourceLines(const SourceReports& sources, const Texts& texts);

}  // namespace host
