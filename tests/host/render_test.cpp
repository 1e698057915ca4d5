// What people read: findings, names, numbers and lines.
#include <gtest/gtest.h>
#include <json/reader.h>
#include <json/writer.h>

#include <cstdint>
#include <fstream>

#include "host/answer/finding_text.h"
#include "host/cli/terminal.h"
#include "host/text/escape.h"
#include "host/text/quantity.h"
#include "tests/support/own_folder.h"

namespace host {
namespace {

TEST(Render, EveryCaseThatThePageRendersComesOutTheSame) {
  Json::Value table;
  std::ifstream(VELA_RENDER_CASES) >> table;
  std::ofstream(test_support::OwnFolder() + "cases.json") << table["texts"];
  const Texts texts(test_support::OwnFolder(), "cases");
  ASSERT_GT(table["cases"].size(), 10U);
  for (const Json::Value& c : table["cases"]) {
    SCOPED_TRACE(c["why"].asString());
    Description description{c["format"].asString(), {}, c["formatted"].asBool()};
    for (const Json::Value& param : c["params"]) description.params.push_back(param.asString());
    EXPECT_EQ(RenderDescription(description, texts), c["text"].asString());
  }
  ASSERT_GT(table["sanitized"].size(), 10U);
  for (const Json::Value& c : table["sanitized"]) {
    EXPECT_EQ(Sanitize(c[0].asString()), c[1].asString()) << c[1];
  }
  EXPECT_EQ(Sanitize("\xE2\x80"), "\xE2\x80") << "a cut character";
  EXPECT_EQ(Sanitize("\xC2"), "\xC2");
}

TEST(Style, LongLinesGoOnBelowTheirText) {
  const struct {
    std::size_t columns;
    const char *text, *lines;
  } cases[] = {{0, "one two three", "  > one two three"},
               {17, "one two three", "  > one two three"},
               {16, "one two three", "  > one two\n    three"},
               {5, "incomprehensible b", "  > incomprehensible\n    b"},
               {14, "容量 不足 です", "  > 容量 不足\n    です"},
               {80, "", "  > "}};
  for (const auto& c : cases)
    EXPECT_EQ(Style(false, c.columns).WrapLines(2, "> ", c.text), c.lines);
}

TEST(Quantity, ComesInTheUnitAndWithTheDigitsThatMatter) {
  const Texts english(VELA_TEXTS, "en"), german(VELA_TEXTS, "de");
  constexpr std::uint64_t kKiB = 1024, kGiB = kKiB * kKiB * kKiB;
  const struct {
    std::string shown;
    const char* wanted;
  } cases[] = {{FormatBytes(0, english), "0\u00A0B"},
               {FormatBytes(999, english), "999\u00A0B"},
               {FormatBytes(1000, english), "1\u00A0KiB"},
               {FormatBytes(1000 * kKiB, english), "1\u00A0MiB"},
               {FormatBytes(999 * kKiB, english), "999\u00A0KiB"},
               {FormatBytes(99 * kGiB + kGiB / 2, english), "99.5\u00A0GiB"},
               {FormatBytes(100 * kGiB + kGiB / 4, english), "100\u00A0GiB"},
               {FormatBytes(4 * kGiB + kGiB / 8, german), "4,1\u00A0GiB"},
               {FormatBytes(UINT64_MAX, english), "16\u00A0EiB"},
               {FormatCount(999), "999"},
               {FormatCount(1000), "1\u202F000"},
               {FormatCount(1234567), "1\u202F234\u202F567"},
               {FormatMilliseconds(994, english), "0.99\u00A0ms"},
               {FormatMilliseconds(1000, english), "1\u00A0ms"},
               {FormatMilliseconds(1234, german), "1,2\u00A0ms"},
               {FormatPercent(0.05, english), "5\u00A0%"},
               {FormatPercent(0.0125, german), "1,25\u00A0%"},
               {FormatNumber(2.2), "2.2"},
               {FormatNumber(40), "40"},
               {FormatUptime("0:59:59", english), "59 min"},
               {FormatUptime("1:0:0", english), "1 h 0 min"},
               {FormatUptime("47:59:4", english), "47 h 59 min"},
               {FormatUptime("48:3:4", english), "2 d 0 h"},
               {FormatUptime("", english), ""}};
  for (const auto& c : cases) EXPECT_EQ(c.shown, c.wanted);
}

}  // namespace
}  // namespace host
