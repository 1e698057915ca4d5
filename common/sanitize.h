// Text of unknown origin, made safe to show on a terminal, in a log or on a page.
#pragma once

#include <string>
#include <string_view>

namespace common {

// Control characters, those that turn the direction of writing, and each byte that is not UTF-8
// become U+FFFD.
std::string Sanitize(std::string_view text);

}  // namespace common
