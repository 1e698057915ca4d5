// Which language to answer in.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace host {

struct Language {
  const char* code;  // as BCP 47 has it, and the name of its text file
  const char* name;  // in itself
};
// The languages that the texts exist in; English first.
const std::vector<Language>& ListLanguages();

// "de_AT.UTF-8", "de-CH" and "DE" are "de", any Chinese is "zh-CN"; empty when the
// texts do not exist in it.
std::string FindLanguage(std::string_view locale);

// What an Accept-Language header ("de-CH, fr;q=0.9") likes best of them; null: none was sent.
// English where it names none of ours.
std::string ChooseAcceptedLanguage(const char* header);

// The one of `wanted` when it is not empty (throws Failure(kUsage) when it is unknown),
// else of the environment's LC_ALL, LC_MESSAGES or LANG, else English.
std::string ChooseLanguage(const std::string& wanted);

// Whether this many are told in the plural form "one", as CLDR has it for our languages.
bool IsSingular(std::int64_t count, std::string_view language);

}  // namespace host
