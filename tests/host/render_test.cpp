#include "host/answer/finding_text.h"
#include "host/text/escape.h"
#include "host/text/quantity.h"

#include <gtest/gtest.h>
#include <json/reader.h>
#include <json/writer.h>

#include <fstream>
#include <utility>

#include "host/cli/terminal.h"
#include "host/site/report_page.h"
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
}

// The page draws with script, the report without: the drawings are the same.
TEST(Render, TheReportHasThePagesIcons) {
  std::ifstream file(VELA_TEXTS "/../www/render.js");
  const std::string page{std::istreambuf_iterator(file), {}};
  const Texts texts(VELA_TEXTS, "en");
  const std::pair<const char*, const char*> looks[] = {
      {"danger", R"("type":0,"id":"x")"},
      {"warning", R"("type":1,"id":"x")"},
      {"notice", R"("type":2,"id":"x")"},
      {"well", R"("type":2,"id":"system_health")"}};
  for (const auto& [look, rule] : looks) {
    const Reply reply = {R"({"hostname":"","interfaces":[],"uptime":"","rule":{"priority":1,)" +
                             std::string(rule) + R"(,"description":{"description_format":"",)" +
                             R"("description_params":[],"description_use_formatted":true}}})",
                         {}};
    const std::string report = ReportPage({{reply, {}, ""}, "en", "", ""}, texts);
    const auto drawn = [&report](const std::string& part) {
      const std::size_t begin = report.find("class=\"" + part + "\" d=\"") + part.size() + 12;
      return report.substr(begin, report.find('"', begin) - begin);
    };
    const std::string icon =
        std::string(look) + ": [\"" + drawn("shape") + "\", \"" + drawn("mark") + "\"]";
    EXPECT_NE(page.find(icon), std::string::npos) << icon;
  }
}

TEST(Render, TheTerminalGetsNoControlCharactersFromNames) {
  const struct {
    const char *name, *shown;
  } cases[] = {{"a\033[2Jb", "a\uFFFD[2Jb"},
               {"a\nb\x7F", "a\uFFFDb\uFFFD"},
               {"a\u009B31mb", "a\uFFFD31mb"},
               {"txt.\u202Eexe", "txt.\uFFFDexe"},
               {"Fotos – été 写真", "Fotos – été 写真"},
               {"\xE2\x80", "\xE2\x80"}};
  for (const auto& c : cases) EXPECT_EQ(Sanitize(c.name), c.shown);
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
  for (const auto& c : cases) EXPECT_EQ(Style(false, c.columns).Hanging(2, "> ", c.text), c.lines);
}

TEST(Render, UptimeIsToldInTheTwoUnitsThatMatter) {
  const Texts texts(VELA_TEXTS, "en");
  EXPECT_EQ(FormatUptime("0:59:59", texts), "59 min");
  EXPECT_EQ(FormatUptime("26:3:4", texts), "26 h 3 min");
  EXPECT_EQ(FormatUptime("49:3:4", texts), "2 d 1 h");
  EXPECT_EQ(FormatUptime("", texts), "");
}

}  // namespace
}  // namespace host
