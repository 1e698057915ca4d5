// JSON text as people write it: members in the given order, and what fits on a line of 100
// columns stays on it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <json/value.h>

namespace common {

// On one line; texts as the bytes that they are.
std::string CompactJson(const Json::Value& value);

class Outline {
 public:
  explicit Outline(const Json::Value& value);
  static Outline Object() { return {'{', '}'}; }
  static Outline List() { return {'[', ']'}; }
  static Outline Number(std::string digits);

  void Add(const std::string& name, Outline value);  // to an object
  void Add(Outline value);                           // to a list
  bool Empty() const { return parts_.empty(); }

  // At `column` of a line that is indented by `indent`.
  std::string Text(std::size_t indent = 0, std::size_t column = 0) const;

 private:
  Outline(char open, char close) : open_(open), close_(close) {}
  std::string OneLine() const;

  std::string scalar_;
  char open_ = 0, close_ = 0;                           // 0: a scalar
  std::vector<std::pair<std::string, Outline>> parts_;  // "\"name\": ", or "" in a list
};

}  // namespace common
