#include "common/json_numbers.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <locale>

#include "common/json_marks.h"

namespace common {
namespace {

constexpr std::string_view kDigits = "0123456789";

// What the library takes for a number, be it one or not.
std::size_t NumberLength(std::string_view text) {
  const auto skip = [&text](std::size_t from, std::string_view what) {
    return std::min(text.find_first_not_of(what, from), text.size());
  };
  std::size_t length = skip(1, kDigits);
  if (text.substr(length, 1) == ".") length = skip(length + 1, kDigits);
  if (text.substr(length, 1) != "e" && text.substr(length, 1) != "E") return length;
  ++length;
  if (text.substr(length, 1) == "+" || text.substr(length, 1) == "-") ++length;
  return skip(length, kDigits);
}

// "1.25e3" as "125e1". What is no number, such as "1.5e", stays none.
std::string WithoutPoint(std::string_view number) {
  const std::size_t point = number.find('.');
  if (point == number.npos) return std::string(number);
  const std::size_t end = std::min(number.find_first_of("eE"), number.size());
  const std::string_view decimals = number.substr(point + 1, end - point - 1);
  std::string text = std::string(number.substr(0, point)).append(decimals) + 'e';
  if (end == number.size()) return text + '-' + std::to_string(decimals.size());

  std::string_view exponent = number.substr(end + 1);
  if (exponent.starts_with('+') && exponent.size() > 1) exponent.remove_prefix(1);
  std::int32_t power = 0;
  const auto [stop, error] = std::from_chars(exponent.begin(), exponent.end(), power);
  // None, or so large that the decimals make no difference.
  if (error != std::errc()) return text.append(exponent);
  return text + std::to_string(power - static_cast<std::int64_t>(decimals.size()));
}

}  // namespace

bool LocaleReadsFractions() {
  return std::use_facet<std::numpunct<char>>(std::locale()).decimal_point() == '.';
}

std::string WithoutDecimalPoints(std::string_view document) {
  std::string text;
  while (!document.empty()) {
    const char first = document[0];
    const bool isNumber = first == '-' || kDigits.find(first) != kDigits.npos;
    const std::size_t length = isNumber       ? NumberLength(document)
                               : first == '"' ? GetQuotedLength(document)
                               : first == '/' ? GetCommentLength(document)
                                              : 1;
    const std::string_view token = document.substr(0, length);
    if (isNumber) {
      text += WithoutPoint(token);
    } else {
      text += token;
    }
    document.remove_prefix(token.size());
  }
  return text;
}

}  // namespace common
