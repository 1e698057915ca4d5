#include "common/number.h"

#include <cerrno>
#include <cstdlib>

#include <locale.h>

namespace common {

std::optional<double> ToDouble(const std::string& text) {
  // Asked for the "C" locale, the C library hands out its constant one: no allocation.
  const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  const int error = errno;
  errno = 0;
  char* end = nullptr;
  const double number = strtod_l(text.c_str(), &end, locale);
  const bool valid = end != text.c_str() && errno != ERANGE;
  errno = error;
  freelocale(locale);
  return valid ? std::optional(number) : std::nullopt;
}

std::optional<std::uint64_t> ToSize(double number) {
  if (!(number >= 0 && number < 0x1p64)) return std::nullopt;
  return static_cast<std::uint64_t>(number);
}

}  // namespace common
