// What an answer covers: which of the checks could be made, and what is not known.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <json/value.h>

#include "host/answer/answer.h"
#include "host/answer/sources.h"

namespace host {

enum class Outcome {
  Finding,
  Nothing,   // made, and nothing to report
  NotMade,   // nothing found, and a source that the check rests on was not read
  Accepted,  // nothing found, and such a source is not watched, as its owner wants it
};

// "finding", "nothing", "not_made" or "accepted".
const char* ToString(Outcome outcome);

// Of the check of that name.
Outcome JudgeCheck(std::string_view check, bool hasFinding, const SourceReports& sources);

// The names of the sources that this check rests on and that nobody has looked at.
std::vector<std::string> ListUnseen(std::string_view check, const SourceReports& sources,
                                    const Texts& texts);

// Takes out of what a check saw whatever may be no more than the default value of a source that
// was not read: null stands for it.
void HideUnseen(std::string_view check, const SourceReports& sources, Json::Value& saw);

// The answer in a sentence: the finding's; where nothing was found and something was not read,
// what is not known, and how much: "disks, UPS. 8 of 10 checks found nothing."
std::string FormatAnswer(const Finding& finding, const SourceReports& sources, const Texts& texts);

}  // namespace host
