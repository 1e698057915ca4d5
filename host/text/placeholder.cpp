#include "host/text/placeholder.h"

#include <algorithm>
#include <charconv>

namespace host {

std::optional<Placeholder> FindPlaceholder(std::string_view text, std::size_t from) {
  for (std::size_t open = text.find('{', from); open != std::string_view::npos;
       open = text.find('{', open + 1)) {
    Placeholder found{open, 0, 0};
    const char* digits = text.data() + open + 1;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(digits, end, found.number);
    if (error != std::errc() || stop == end || *stop != '}') continue;
    found.end = static_cast<std::size_t>(stop - text.data()) + 1;
    return found;
  }
  return std::nullopt;
}

std::string FillPlaceholders(std::string_view text, const std::vector<std::string>& values) {
  std::string filled;
  std::size_t at = 0;
  while (const auto placeholder = FindPlaceholder(text, at)) {
    filled += text.substr(at, placeholder->begin - at);
    if (placeholder->number < values.size()) {
      filled += values[placeholder->number];
    } else {
      filled += text.substr(placeholder->begin, placeholder->end - placeholder->begin);
    }
    at = placeholder->end;
  }
  return filled.append(text.substr(at));
}

std::string FillNames(std::string_view text, const std::vector<NamedValue>& values) {
  std::string filled;
  while (!text.empty()) {
    const auto named = std::ranges::find_if(values, [text](const NamedValue& value) {
      return text.starts_with("{" + std::string(value.first) + "}");
    });
    const bool found = named != values.end();
    filled += found ? named->second : text.substr(0, 1);
    text.remove_prefix(found ? named->first.size() + 2 : 1);
  }
  return filled;
}

}  // namespace host
