#include "host/text/escape.h"

namespace host {
namespace {

// Whether a control character, or one that turns the direction of writing, begins with `first`.
bool IsUnsafe(unsigned char first, std::string_view rest) {
  if (first < 0x20 || first == 0x7F) return true;
  if (first == 0xC2 && !rest.empty()) return static_cast<unsigned char>(rest[0]) < 0xA0;
  if (first != 0xE2 || rest.size() < 2) return false;
  const std::string_view two = rest.substr(0, 2);
  return (two >= "\x80\xAA" && two <= "\x80\xAE") || (two >= "\x81\xA6" && two <= "\x81\xA9");
}

}  // namespace

std::string Sanitize(std::string_view text) {
  std::string sanitized;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto first = static_cast<unsigned char>(text[i]);
    if (!IsUnsafe(first, text.substr(i + 1))) {
      sanitized += text[i];
      continue;
    }
    sanitized += "\xEF\xBF\xBD";
    i += first == 0xC2 ? 1 : first == 0xE2 ? 2 : 0;
  }
  return sanitized;
}

std::string EscapeHtml(std::string_view text) {
  std::string escaped;
  for (const char c : Sanitize(text)) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&#39;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

std::string WrapInTag(std::string_view tag, std::string_view markup, std::string_view attributes) {
  std::string element = "<" + std::string(tag);
  if (!attributes.empty()) element.append(" ").append(attributes);
  return element.append(">").append(markup).append("</").append(tag).append(">\n");
}

std::string MakeElement(std::string_view tag, std::string_view text, std::string_view attributes) {
  return WrapInTag(tag, EscapeHtml(text), attributes);
}

}  // namespace host
