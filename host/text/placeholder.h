// Numbered placeholders: "{0}", "{1}", ...
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace host {

struct Placeholder {
  std::size_t begin, end;  // of "{n}" in the text
  std::size_t number;      // n
};

// The first one at or after `from`.
std::optional<Placeholder> FindPlaceholder(std::string_view text, std::size_t from);

}  // namespace host
