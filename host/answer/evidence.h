// Why something was not well, in the words of one language.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/answer/parts.h"
#include "host/text/texts.h"
#include "platform/status/evidence.h"

namespace host {

struct ToldCause {
  // "md0 (RAID 5, Volume 1) runs on 3 of its 4 disks.", and what belongs to it: "Missing: bay 3,
  // WDC WD40EFRX, serial WD-1, was sdc.", "Since 2026-11-20 14:03."
  std::vector<std::string> lines;
  std::string show;               // the command that shows it; may be empty
  std::vector<std::string> mend;  // the commands that mend it
};

// What is told beside an answer of the machine's own evidence.
struct Evidence {
  Parts parts;
  std::vector<VELAEvidence> records;
};

// Of one record. A key without a text is told with its figures.
ToldCause FormatCause(const VELAEvidence& evidence, const Parts& parts, const Texts& texts);

// The causes that speak for the check of that name, in their order; of no name all.
std::vector<ToldCause> FormatCauses(const Evidence& evidence, std::string_view check,
                                    const Texts& texts);

}  // namespace host
