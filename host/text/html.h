// Text for a page.
#pragma once

#include <string>
#include <string_view>

namespace host {

// Shown as it is, in an element or in a quoted attribute, whatever it holds; what could turn
// the direction of writing or control a terminal is U+FFFD, as on the terminal.
std::string EscapeHtml(std::string_view text);
// <tag attributes>text</tag>, the text escaped.
std::string MakeElement(std::string_view tag, std::string_view text,
                        std::string_view attributes = "");
// The same around what is markup already.
std::string WrapInTag(std::string_view tag, std::string_view markup,
                      std::string_view attributes = "");

}  // namespace host
