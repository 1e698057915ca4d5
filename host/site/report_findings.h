// What a report tells of findings and checks.
#pragma once

#include <string>
#include <vector>

#include "host/answer/complete_answer.h"
#include "host/text/texts.h"

namespace host {

// A heading, and what stands below it; empty where nothing does.
std::string Section(const std::string& title, const std::string& markup);

// Why the most urgent finding is there, what to do about it, what it means. `ranked`: of checks;
// empty where the module that explains is not loaded.
std::string LeadOn(const Finding& finding, const std::vector<CheckerResult>& ranked,
                   const Evidence& evidence, const Texts& texts);
// Those that lost.
std::string FurtherFindings(const std::vector<CheckerResult>& ranked, const Evidence& evidence,
                            const Texts& texts);
// What became of each check and what it saw, and why the most urgent finding is the most urgent.
std::string Checks(const CompleteAnswer& complete, const std::vector<CheckerResult>& ranked,
                   const Texts& texts);

}  // namespace host
