// What the texts say about a finding beside its sentence.
#pragma once

#include <string>
#include <string_view>

#include "host/answer/answer.h"
#include "host/text/texts.h"

namespace host {

// The section of the texts that holds a finding's "title", "meaning", "ignored", "do" and
// "where": its id and text key.
std::string AdviceSection(const Finding& finding);
// Of an unknown finding: that there is none.
std::string FindAdvice(const Finding& finding, std::string_view key, const Texts& texts);

// The finding in words, without anything that could harm a terminal.
std::string RenderSentence(const Finding& finding, const Texts& texts);
// 2.2 as "2.2", 40 as "40".
std::string FormatNumber(double value);
// "26:3:4" as "1 d 2 h"; empty when it is not known.
std::string FormatUptime(const std::string& uptime, const Texts& texts);

}  // namespace host
