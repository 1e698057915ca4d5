// Access to JSON of unknown shape. The library asserts, throws or allocates on several
// of these questions; here every odd document has a plain answer.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <json/value.h>

namespace common {

// The member of an object; null for anything that is not an object or lacks it.
const Json::Value* FindMember(const Json::Value& value, const char* name);

// The name of the member that an iterator over an object stands at.
std::string_view MemberName(const Json::ValueConstIterator& member);

// The text of a string, which stays the value's; "" for any other value.
std::string_view ViewText(const Json::Value& value);

// The member's text; "" unless it is a string.
std::string TextMember(const Json::Value& value, const char* name);

// The member as a count of bytes; 0 unless it is a number within 64 unsigned bits.
// Fractions are dropped.
std::uint64_t SizeMember(const Json::Value& value, const char* name);

// The values that one document may make: 190 MiB of memory at most.
constexpr std::size_t kMostJsonValues = 1'000'000;

enum class Parsed { Whole, Invalid, TooLarge };

// Parses `text` into `value`, which stays as it was unless Whole. Invalid: no JSON document, or
// one with more levels than are followed. TooLarge: it would make more than `mostValues`.
Parsed TryParseJson(std::string_view text, Json::Value& value,
                    std::size_t mostValues = kMostJsonValues);
// Whether it was Whole.
bool ParseJson(std::string_view text, Json::Value& value);

// Reads and parses a regular file of at most 16 MiB. False on any failure.
bool ReadJsonFile(const char* path, Json::Value& value);

}  // namespace common
