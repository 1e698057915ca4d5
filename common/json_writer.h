// JSON as text.
#pragma once

#include <string>

#include <json/value.h>

namespace common {

// On one line, with the shortest decimals of 15 digits: 2.2 is "2.2", 40 as a real is "40.0".
// Ascii escapes all other characters, and bytes that are not UTF-8 become U+FFFD; Utf8 writes
// texts as the bytes that they are.
enum class Charset { Ascii, Utf8 };
std::string WriteCompact(const Json::Value& document, Charset charset = Charset::Ascii);

// A member a line, for people: indented by two, texts as the bytes that they are. Ends in a
// line feed.
std::string WritePretty(const Json::Value& document);

}  // namespace common
