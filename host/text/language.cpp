#include "host/text/language.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <sstream>

#include "host/text/failure.h"

namespace host {
namespace {

// The part of "zh-CN" before the first "-", in lower case.
std::string PrimaryTag(std::string_view locale) {
  std::string tag(locale.substr(0, locale.find_first_of("-_.@")));
  std::transform(tag.begin(), tag.end(), tag.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return tag;
}

// Of "fr;q=0.9"; 1 where there is none, 0 where it cannot be read.
double ReadWeight(std::string_view range) {
  constexpr std::string_view kWeight = ";q=";
  const std::size_t found = range.find(kWeight);
  if (found == range.npos) return 1;
  const std::string_view digits = range.substr(found + kWeight.size());
  double weight = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), weight);
  return weight;
}

// As setlocale(3) looks: the first that is set and not empty decides.
std::string_view EnvironmentLocale() {
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return value;
  }
  return {};
}

}  // namespace

const std::vector<Language>& ListLanguages() {
  static const std::vector<Language> languages = {{"en", "English"},  {"de", "Deutsch"},
                                                  {"fr", "Français"}, {"es", "Español"},
                                                  {"ja", "日本語"},   {"zh-CN", "简体中文"}};
  return languages;
}

std::string FindLanguage(std::string_view locale) {
  const std::string tag = PrimaryTag(locale);
  for (const Language& language : ListLanguages()) {
    if (tag == PrimaryTag(language.code)) return language.code;
  }
  return {};
}

std::string ChooseAcceptedLanguage(const char* header) {
  std::string chosen = ListLanguages().front().code;
  double best = 0;
  std::istringstream ranges(header != nullptr ? header : "");
  for (std::string range; std::getline(ranges, range, ',');) {
    std::erase(range, ' ');
    const std::string code = FindLanguage(range.substr(0, range.find(';')));
    const double weight = ReadWeight(range);
    if (code.empty() || weight <= best) continue;
    best = weight;
    chosen = code;
  }
  return chosen;
}

std::string ChooseLanguage(const std::string& wanted) {
  if (!wanted.empty()) {
    if (std::string code = FindLanguage(wanted); !code.empty()) return code;
    std::string known;
    for (const Language& language : ListLanguages()) known += std::string(" ") + language.code;
    throw Failure(
        kUsage, "There are no texts in \"" + wanted + "\". Use --lang with one of:" + known + ".");
  }
  std::string code = FindLanguage(EnvironmentLocale());
  return code.empty() ? "en" : code;
}

bool IsSingular(std::int64_t count, std::string_view language) {
  if (language == "ja" || language == "zh-CN") return false;
  return count == 1 || count == -1 || (count == 0 && language == "fr");
}

}  // namespace host
