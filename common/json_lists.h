// Documents with long lists. As values they would take ten times the size of their text, so only
// a few elements at a time are any.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "common/json_reader.h"

namespace common {

// What the lists of one document may hold.
constexpr std::size_t kMostElements = 400'000, kMostListedValues = 4 * kMostElements;

// Takes an element of the list of that name.
using TakeElement = std::function<void(std::string_view list, const Json::Value& element)>;

// Parses `text`, whose root may be an object with long lists as members, as TryParseJson does.
// `value` has them empty: their elements go to `take`, in the document's order. What was taken
// counts only when the document is Whole. TooLarge: there are more elements, or values in them,
// than the lists may hold, or more than 100,000 values in one element or outside of the lists.
// The lists are read in pieces of at least `piece` bytes.
Parsed ParseJsonLists(std::string text, Json::Value& value, const TakeElement& take,
                      std::size_t piece = std::size_t{64} << 10);

}  // namespace common
