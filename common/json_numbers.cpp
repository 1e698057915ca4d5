#include "common/json_numbers.h"

#include <algorithm>
#include <locale>

#include "common/number.h"

namespace common {
namespace {

constexpr std::string_view kDigits = "0123456789";

std::size_t TextLength(std::string_view text) {
  std::size_t length = 1;
  while (length < text.size() && text[length] != '"') length += text[length] == '\\' ? 2 : 1;
  return length + 1;
}

std::size_t CommentLength(std::string_view text) {
  if (text.starts_with("//")) return text.find_first_of("\r\n");
  if (!text.starts_with("/*")) return 1;
  const std::size_t end = text.find("*/", 2);
  return end == text.npos ? end : end + 2;
}

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

// A number as one that the library reads in any locale: a fraction or an exponent gives way
// to the size that it stands for, or to -1, which is none. A space keeps the shorter number
// apart from what follows: in "1.5.5", which is none, ".5" must not become its fraction.
std::string WholeNumber(std::string_view number) {
  std::string text(number);
  const bool complete = (kDigits.find(text.back()) != kDigits.npos) || text.back() == '.';
  if (!complete || text.find_first_of(".eE") == text.npos) return text;
  const std::optional<double> value = ToDouble(text);
  if (!value) return text;
  const std::optional<std::uint64_t> size = ToSize(*value);
  return (size ? std::to_string(*size) : "-1") + ' ';
}

}  // namespace

bool LocaleReadsFractions() {
  return std::use_facet<std::numpunct<char>>(std::locale()).decimal_point() == '.';
}

std::string WithWholeNumbers(std::string_view document) {
  std::string whole;
  while (!document.empty()) {
    const char first = document[0];
    const bool isNumber = first == '-' || kDigits.find(first) != kDigits.npos;
    const std::size_t length = isNumber       ? NumberLength(document)
                               : first == '"' ? TextLength(document)
                               : first == '/' ? CommentLength(document)
                                              : 1;
    const std::string_view token = document.substr(0, length);
    if (isNumber) {
      whole += WholeNumber(token);
    } else {
      whole += token;
    }
    document.remove_prefix(token.size());
  }
  return whole;
}

}  // namespace common
