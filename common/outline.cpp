#include "common/outline.h"

#include <json/writer.h>

namespace common {
namespace {

constexpr std::size_t kColumns = 100;

}  // namespace

std::string CompactJson(const Json::Value& value) {
  Json::StreamWriterBuilder compact;
  compact["indentation"] = "";
  compact["emitUTF8"] = true;
  compact["precision"] = 15;  // 2.2 is not 2.2000000000000002
  return Json::writeString(compact, value);
}

Outline::Outline(const Json::Value& value) {
  if (value.isObject()) {
    *this = Object();
    for (const std::string& name : value.getMemberNames()) Add(name, Outline(value[name]));
  } else if (value.isArray()) {
    *this = List();
    for (const Json::Value& element : value) Add(Outline(element));
  } else {
    scalar_ = CompactJson(value);
  }
}

Outline Outline::Number(std::string digits) {
  Outline number(0, 0);
  number.scalar_ = std::move(digits);
  return number;
}

void Outline::Add(const std::string& name, Outline value) {
  parts_.emplace_back(CompactJson(name) + ": ", std::move(value));
}

void Outline::Add(Outline value) { parts_.emplace_back("", std::move(value)); }

std::string Outline::OneLine() const {
  if (open_ == 0) return scalar_;
  std::string line(1, open_);
  for (const auto& [name, value] : parts_) {
    if (line.size() > 1) line += ", ";
    line += name + value.OneLine();
  }
  return line + close_;
}

std::string Outline::Text(std::size_t indent, std::size_t column) const {
  std::string line = OneLine();
  // One column is the comma's. The whole document never stands on one line.
  if (open_ == 0 || parts_.empty() || (column > 0 && column + line.size() < kColumns)) return line;
  const std::string margin(indent + 2, ' ');
  std::string text(1, open_);
  for (const auto& [name, value] : parts_) {
    text += text.size() > 1 ? ",\n" : "\n";
    text += margin + name + value.Text(indent + 2, indent + 2 + name.size());
  }
  return text + "\n" + std::string(indent, ' ') + close_;
}

}  // namespace common
