// JSON as text.
#pragma once

#include <string>

#include <json/value.h>

namespace common {

// On one line, in ASCII, with the shortest decimals of 15 digits: 2.2 is "2.2", 40 as a real
// is "40.0". Bytes that are not UTF-8 become U+FFFD.
std::string WriteCompact(const Json::Value& document);

// A member a line, for people: indented by two, texts as the bytes that they are. Ends in a
// line feed.
std::string WritePretty(const Json::Value& document);

}  // namespace common
