#include "common/sanitize.h"

#include <boost/locale/utf.hpp>

namespace common {
namespace {

namespace utf = boost::locale::utf;

bool IsUnsafe(utf::code_point character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0) ||
         (character >= 0x202A && character <= 0x202E) ||
         (character >= 0x2066 && character <= 0x2069);
}

}  // namespace

std::string Sanitize(std::string_view text) {
  std::string sanitized;
  for (const char* at = text.begin(); at != text.end();) {
    const char* next = at;
    const utf::code_point character = utf::utf_traits<char>::decode(next, text.end());
    const bool valid = character != utf::illegal && character != utf::incomplete;
    if (!valid) next = at + 1;
    if (valid && !IsUnsafe(character))
      sanitized.append(at, next);
    else
      sanitized.append("\uFFFD");
    at = next;
  }
  return sanitized;
}

}  // namespace common
