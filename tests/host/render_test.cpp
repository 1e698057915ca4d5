// What people read: findings, names, numbers and lines, each as render_cases.json has them.
#include <gtest/gtest.h>
#include <json/reader.h>
#include <json/writer.h>

#include <fstream>

#include "host/answer/finding_text.h"
#include "host/answer/notes.h"
#include "host/cli/terminal.h"
#include "host/text/escape.h"
#include "host/text/quantity.h"
#include "tests/support/own_folder.h"

namespace host {
namespace {

Json::Value Cases(const char* name) {
  Json::Value all;
  std::ifstream(VELA_RENDER_CASES) >> all;
  EXPECT_GT(all[name].size(), 5U);
  return all[name];
}

TEST(Render, EveryCaseThatThePageRendersComesOutTheSame) {
  std::ofstream(test_support::OwnFolder() + "cases.json") << Cases("texts");
  const Texts texts(test_support::OwnFolder(), "cases");
  for (const Json::Value& c : Cases("cases")) {
    Description description{c["format"].asString(), {}, c["formatted"].asBool()};
    for (const Json::Value& param : c["params"]) description.params.push_back(param.asString());
    EXPECT_EQ(RenderDescription(description, texts), c["text"].asString()) << c["why"];
  }
  for (const Json::Value& c : Cases("sanitized"))
    EXPECT_EQ(Sanitize(c[0].asString()), c[1].asString()) << c[1];
  // A mark for each byte: cut short, too long, half a pair, beyond the last character.
  for (const char* bytes : {"\xE2\x80", "\xC0\xAF", "\xED\xA0\x80\xFF", "\xF4\x90\x80\x80"}) {
    std::string marks;
    for (const char* at = bytes; *at != '\0'; ++at) marks += "\uFFFD";
    for (const char* rest : {"", "\u20AC😀"})
      EXPECT_EQ(Sanitize(std::string("a") + bytes + rest), "a" + marks + rest);
  }
}

TEST(Render, NotesComeOutAsOnThePage) {
  for (const Json::Value& c : Cases("notes")) {
    const std::string language = c[0].asString();
    std::ofstream(test_support::OwnFolder() + language + ".json") << Cases("texts");
    VELANote note;
    c[1]["key"].asString().copy(note.key, sizeof note.key);
    c[1]["part"].asString().copy(note.part, sizeof note.part);
    note.figure = c[1]["figure"].asInt64();
    note.mark = c[1]["mark"].asInt64();
    const Texts texts(test_support::OwnFolder(), language);
    EXPECT_EQ(FormatNotes({note}, texts).at(0).text, c[2].asString()) << language;
  }
}

TEST(Style, LongLinesGoOnBelowTheirText) {
  for (const Json::Value& c : Cases("wrapped"))
    EXPECT_EQ(Style(false, c[0].asUInt()).WrapLines(2, "> ", c[1].asString()), c[2].asString());
}

TEST(Quantity, ComesInTheUnitAndWithTheDigitsThatMatter) {
  for (const Json::Value& c : Cases("quantities")) {
    const Texts texts(VELA_TEXTS, c[1].asString());
    const std::string unit = c[0].asString();
    EXPECT_EQ(unit == "bytes"          ? FormatBytes(c[2].asUInt64(), texts)
              : unit == "count"        ? FormatCount(c[2].asUInt64())
              : unit == "microseconds" ? FormatMilliseconds(c[2].asUInt(), texts)
              : unit == "share"        ? FormatPercent(c[2].asDouble(), texts)
              : unit == "number"       ? FormatNumber(c[2].asDouble(), texts)
                                       : FormatUptime(c[2].asString(), texts),
              c[3].asString());
  }
}

}  // namespace
}  // namespace host
