#include "common/json_marks.h"

#include <algorithm>

namespace common {
namespace {

std::size_t GetTokenLength(std::string_view text) {
  if (text[0] == '"') return GetQuotedLength(text);
  return text[0] == '/' ? GetCommentLength(text) : 1;
}

}  // namespace

std::size_t GetQuotedLength(std::string_view text) {
  std::size_t length = 1;
  while (length < text.size() && text[length] != '"') length += text[length] == '\\' ? 2 : 1;
  return std::min(length + 1, text.size());
}

std::size_t GetCommentLength(std::string_view text) {
  if (text.starts_with("//")) return std::min(text.find_first_of("\r\n"), text.size());
  if (!text.starts_with("/*")) return 1;
  const std::size_t end = text.find("*/", 2);
  return end == text.npos ? text.size() : end + 2;
}

bool JsonMarks::TakeBracket() {
  if (Opens()) {
    open_ += Mark() == '[' ? ']' : '}';
    if (open_.size() > kDeepestJson) next_ = document_.size();
    return true;
  }
  if (open_.empty() || open_.back() != Mark()) return false;
  open_.pop_back();
  if (open_.empty()) next_ = document_.size();
  return true;
}

bool JsonMarks::Next() {
  // What may stand before the document: blanks, comments, a byte order mark.
  constexpr std::string_view kBefore = " \t\r\n/\xEF\xBB\xBF";
  while (next_ < document_.size()) {
    place_ = next_;
    next_ += GetTokenLength(document_.substr(place_));
    if ((Opens() || Closes()) && TakeBracket()) return true;
    if (!open_.empty() && Mark() == ',') return true;
    // Without brackets: the document itself, or none.
    if (open_.empty() && kBefore.find(Mark()) == kBefore.npos) return false;
  }
  return false;
}

JsonShape MeasureJson(std::string_view document) {
  JsonShape shape;
  for (JsonMarks marks(document); marks.Next();) {
    if (!marks.Closes()) ++shape.values;
    shape.depth = std::max(shape.depth, marks.Depth());
  }
  return shape;
}

}  // namespace common
