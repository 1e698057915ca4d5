// A finding in the words of one language: its sentence, and the advice about it.
#pragma once

#include <string>
#include <string_view>

#include "host/answer/answer.h"
#include "host/text/texts.h"

namespace host {

// Names of volumes and units come out literally, whatever they hold; a placeholder or a
// reference that nothing belongs to stays as it is.
std::string RenderDescription(const Description& description, const Texts& texts);
// The finding's own "sentence", where others share its text, else its description; without
// anything that could harm a terminal.
std::string RenderSentence(const Finding& finding, const Texts& texts);

// In one line; not every finding's words are a sentence, and what follows explains those.
std::string JoinSentences(const std::string& first, const std::string& second);

// The section of the texts that holds a finding's "title", "meaning", "ignored", "do", "where"
// and perhaps "sentence": its id and text key.
std::string AdviceSection(const Finding& finding);
// Of an unknown finding: that there is none.
std::string FindAdvice(const Finding& finding, std::string_view key, const Texts& texts);

}  // namespace host
