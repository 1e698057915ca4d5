// Text of unknown origin, made safe to show on a page.
#pragma once

#include <string>
#include <string_view>

#include "common/sanitize.h"

namespace host {

using common::Sanitize;

// Sanitized, and shown by a browser as it is, in an element or in a quoted attribute.
std::string EscapeHtml(std::string_view text);
// <tag attributes>text</tag>, the text escaped.
std::string MakeElement(std::string_view tag, std::string_view text,
                        std::string_view attributes = "");
// The same around what is markup already.
std::string WrapInTag(std::string_view tag, std::string_view markup,
                      std::string_view attributes = "");

}  // namespace host
