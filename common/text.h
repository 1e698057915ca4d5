// Text at the border to the platform.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace common {

// What may be null, which stands for no text.
inline const char* OrEmpty(const char* text) { return text != nullptr ? text : ""; }

// The text of a fixed field: up to its first NUL, or all of it when there is none.
template <std::size_t Size>
std::string_view ViewText(const char (&field)[Size]) {
  return {field, strnlen(field, Size)};
}

// Copies what of `text` has a place in a field of zeros, the last of which stays.
template <std::size_t Size>
void FillField(char (&field)[Size], std::string_view text) {
  text.copy(field, Size - 1);
}

}  // namespace common
