// The client's texts of one language: section -> key -> text, or its plural forms ("one", "other").
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#include <json/value.h>

#include "host/text/placeholder.h"

namespace host {

// What stands between a label and what follows it; full-width marks bring their own blank.
inline std::string EndLabel(std::string_view colon) {
  return std::string(colon) + (colon.ends_with("\uFF1A") ? "" : " ");
}

class Texts {
 public:
  // Reads `folder`/<language>.json, which the page has too, and what only the tool says, from
  // `folder`/explain. Throws Failure(kUnavailable).
  Texts(const std::filesystem::path& folder, const std::string& language);

  const std::string& Language() const { return language_; }
  // Null when there is no such text.
  const std::string* FindText(std::string_view section, std::string_view key) const;
  // The text in the plural form of `count`; null when there is no such text.
  const std::string* FindCounted(std::string_view section, std::string_view key,
                                 std::int64_t count) const;
  // The text that "section:key" names, else the reference itself: better than nothing.
  std::string Resolve(std::string_view reference) const;
  // The text of `key` in `section`, else the key.
  std::string GetText(std::string_view section, std::string_view key) const;
  // A label: the words and the language's colon.
  std::string AddColon(const std::string& words) const { return words + Resolve("common:colon"); }
  // The same, and the blank that the language has after it.
  std::string AddLabel(const std::string& words) const {
    return words + EndLabel(Resolve("common:colon"));
  }
  // One of the program's own words (section "ui"), its {0}, {1}, ... filled.
  template <typename... Values>
  std::string FormatUi(std::string_view key, const Values&... values) const;

  using Section = std::map<std::string, std::string, std::less<>>;
  const std::map<std::string, Section, std::less<>>& Sections() const { return sections_; }

 private:
  void Add(const Json::Value& root);

  const std::string language_;
  std::map<std::string, Section, std::less<>> sections_;
};

template <typename... Values>
std::string Texts::FormatUi(std::string_view key, const Values&... values) const {
  return FillPlaceholders(Resolve(std::string("ui:").append(key)), {std::string(values)...});
}

}  // namespace host
