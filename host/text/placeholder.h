// Numbered placeholders: "{0}", "{1}", ...
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host {

struct Placeholder {
  std::size_t begin, end;  // of "{n}" in the text
  std::size_t number;      // n
};

// The first one at or after `from`.
std::optional<Placeholder> FindPlaceholder(std::string_view text, std::size_t from);

// `text` with each "{n}" replaced by element n of `values`; a number without an element
// stays. What was put in is never looked at again.
std::string FillPlaceholders(std::string_view text, const std::vector<std::string>& values);

// `text` with each "{name}" of `values` replaced. What was put in is never looked at again.
using NamedValue = std::pair<std::string_view, std::string>;
std::string FillNames(std::string_view text, const std::vector<NamedValue>& values);

}  // namespace host
