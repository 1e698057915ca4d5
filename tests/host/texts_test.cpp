#include "host/text/texts.h"

#include <gtest/gtest.h>
#include <json/reader.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <tuple>

#include "host/answer/catalogue.h"
#include "host/answer/finding_text.h"
#include "host/text/language.h"
#include "host/text/placeholder.h"
#include "platform/status/source_status.h"

namespace host {
namespace {

// Every finding that any scenario's expected answer holds.
std::vector<Finding> ReachableFindings() {
  std::vector<Finding> findings;
  for (const auto& folder : std::filesystem::directory_iterator(VELA_SCENARIOS)) {
    std::ifstream file(folder.path() / "expected.json");
    if (!file) continue;
    Json::Value expected;
    file >> expected;
    if (expected.isMember("rule")) findings.push_back(ParseFinding(expected["rule"]));
  }
  return findings;
}

std::set<std::string> ReferencesOf(const Description& description) {
  if (description.formatted) return {description.format};
  return {description.params.begin(), description.params.end()};
}

std::set<std::size_t> PlaceholdersOf(const std::string& text) {
  std::set<std::size_t> numbers;
  for (auto found = FindPlaceholder(text, 0); found; found = FindPlaceholder(text, found->end)) {
    numbers.insert(found->number);
  }
  return numbers;
}

TEST(Texts, EveryReachableFindingIsToldInEveryLanguage) {
  const std::vector<Finding> findings = ReachableFindings();
  ASSERT_GT(findings.size(), 50U);
  for (const Language& language : ListLanguages()) {
    const Texts texts(VELA_TEXTS, language.code);
    for (const Finding& finding : findings) {
      SCOPED_TRACE(std::string(language.code) + " " + AdviceSection(finding));
      for (const std::string& reference : ReferencesOf(finding.description)) {
        EXPECT_NE(texts.Resolve(reference), reference);
      }
      for (const char* key : {"title", "meaning", "ignored", "do", "where"}) {
        const std::string* advice = texts.FindText(AdviceSection(finding), key);
        ASSERT_NE(advice, nullptr) << key;
        EXPECT_NE(*advice, "") << key;
      }
    }
  }
}

TEST(Texts, EveryLanguageHasTheSameTextsWithTheSamePlaceholders) {
  const Texts english(VELA_TEXTS, "en");
  for (const Language& language : ListLanguages()) {
    const Texts texts(VELA_TEXTS, language.code);
    ASSERT_EQ(texts.Sections().size(), english.Sections().size()) << language.code;
    for (const auto& [section, entries] : english.Sections()) {
      ASSERT_EQ(texts.Sections().find(section)->second.size(), entries.size());
      for (const auto& [key, text] : entries) {
        SCOPED_TRACE(std::string(language.code) + " " + section + ":" + key);
        const std::string* translated = texts.FindText(section, key);
        ASSERT_NE(translated, nullptr);
        EXPECT_EQ(PlaceholdersOf(*translated), PlaceholdersOf(text));
      }
    }
  }
}

TEST(Texts, EverySourceHasANameForPeople) {
  const Texts texts(VELA_TEXTS, "en");
  for (int source = 0; source < source_status::kSourceCount; ++source) {
    const char* name = common::SourceName(static_cast<source_status::Source>(source));
    EXPECT_NE(texts.FindText("source", name), nullptr) << name;
  }
  EXPECT_NE(texts.FindText("source", "operating system"), nullptr) << "what only the log tells of";
}

TEST(Texts, SingularAndPluralComeInPairs) {
  const Texts texts(VELA_TEXTS, "en");
  const auto& section = texts.Sections().find("iscsimgr")->second;
  int pairs = 0;
  for (const auto& [key, text] : section) {
    if (!key.starts_with("lun_")) continue;
    EXPECT_TRUE(section.contains("luns_" + key.substr(4))) << key;
    ++pairs;
  }
  EXPECT_EQ(pairs, 5);
}

}  // namespace
}  // namespace host
