// Texts one after the other.
#pragma once

#include <string>
#include <string_view>

namespace linux_platform {

// In one allocation, where a + b + c takes one more for each that the text outgrows.
template <typename... Parts>
std::string Joined(const Parts&... parts) {
  std::string text;
  text.reserve((std::string_view(parts).size() + ...));
  (text.append(std::string_view(parts)), ...);
  return text;
}

}  // namespace linux_platform
