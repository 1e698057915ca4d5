// Text of unknown origin, made safe to show.
#pragma once

#include <string>
#include <string_view>

namespace host {

// Control characters, and those that turn the direction of writing, become U+FFFD.
std::string Sanitize(std::string_view text);

}  // namespace host
