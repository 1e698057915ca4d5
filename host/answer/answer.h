// The document of "get", as values.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <json/value.h>

namespace host {

enum class FindingType : int { Danger = 0, Warning = 1, Normal = 2 };

struct Description {
  std::string format;               // text with placeholders, or the reference of one text
  std::vector<std::string> params;  // references "section:key", or plain values
  bool formatted = false;           // whether it is the second of both
};

struct Finding {
  FindingType type = FindingType::Normal;
  double priority = 0;  // the smaller, the more urgent
  std::string id;
  Description description;

  // The key of the text that says what is wrong; together with the id it names the finding.
  std::string TextKey() const;
  // Type 2 is "all well" only for the healthy default, otherwise a notice.
  bool AllWell() const;
};

struct Interface {
  std::string id, ip, type;
};

struct Answer {
  Finding rule;
  std::string hostname;
  std::string uptime;  // "26:3:4": hours, minutes, seconds; empty when unknown
  std::vector<Interface> interfaces;
};

// Both throw Failure(kNoInput) naming the member that is missing or of another type.
Answer ParseAnswer(std::string_view document);
Finding ParseFinding(const Json::Value& rule);

}  // namespace host
