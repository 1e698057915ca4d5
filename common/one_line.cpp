#include "common/one_line.h"

#include <json/writer.h>

#include <algorithm>
#include <charconv>
#include <string_view>

namespace common {
namespace {

constexpr unsigned kDigits = 15;
constexpr std::size_t kUsualSize = 512;

// What needs no escape; the library knows what becomes of everything else.
bool IsPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return c >= 0x20 && c < 0x7F && c != '"' && c != '\\'; });
}

void WriteText(std::string_view text, std::string& line) {
  if (IsPlain(text)) {
    line.append(1, '"').append(text).append(1, '"');
    return;
  }
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  line += Json::writeString(builder, Json::Value(text.data(), text.data() + text.size()));
}

template <typename Integer>
void WriteInteger(Integer value, std::string& line) {
  char digits[24];
  line.append(digits, std::to_chars(digits, std::end(digits), value).ptr);
}

void Write(const Json::Value& value, std::string& line);

void WriteMembers(const Json::Value& object, std::string& line) {
  line += '{';
  for (auto member = object.begin(); member != object.end(); ++member) {
    if (line.back() != '{') line += ',';
    const char* end = nullptr;
    const char* name = member.memberName(&end);
    WriteText({name, end}, line);
    line += ':';
    Write(*member, line);
  }
  line += '}';
}

void WriteElements(const Json::Value& array, std::string& line) {
  line += '[';
  for (const Json::Value& element : array) {
    if (line.back() != '[') line += ',';
    Write(element, line);
  }
  line += ']';
}

void Write(const Json::Value& value, std::string& line) {
  switch (value.type()) {
    case Json::objectValue:
      return WriteMembers(value, line);
    case Json::arrayValue:
      return WriteElements(value, line);
    case Json::stringValue: {
      const char *text = nullptr, *end = nullptr;
      value.getString(&text, &end);
      return WriteText({text, end}, line);
    }
    case Json::intValue:
      return WriteInteger(value.asLargestInt(), line);
    case Json::uintValue:
      return WriteInteger(value.asLargestUInt(), line);
    case Json::realValue:
      line += Json::valueToString(value.asDouble(), kDigits);
      return;
    case Json::booleanValue:
      line += value.asBool() ? "true" : "false";
      return;
    case Json::nullValue:
      line += "null";
  }
}

}  // namespace

std::string OneLine(const Json::Value& document) {
  std::string line;
  line.reserve(kUsualSize);
  Write(document, line);
  return line;
}

}  // namespace common
