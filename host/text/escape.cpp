#include "host/text/escape.h"

namespace host {
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
