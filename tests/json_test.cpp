// The reader and the writer of JSON, where no machine's answer shows what they do.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "common/json_numbers.h"
#include "common/json_reader.h"
#include "common/json_writer.h"
#include "tests/support/own_folder.h"

namespace common {
namespace {

TEST(JsonReader, ReadsRegularFilesUpToSixteenMebibytes) {
  const std::string file = test_support::OwnFolder() + "document", pipe = file + ".pipe";
  std::ofstream(file) << R"({"a": 1})";
  Json::Value read;
  std::filesystem::resize_file(file, 16 << 20);
  EXPECT_TRUE(ReadJsonFile(file.c_str(), read));
  std::filesystem::resize_file(file, (16 << 20) + 1);
  EXPECT_FALSE(ReadJsonFile(file.c_str(), read));
  EXPECT_FALSE(ParseJson("{\"a\": ", read) || ParseJson(std::string(2000, '['), read));
  EXPECT_EQ(WriteCompact(read), R"({"a":1})") << "what cannot be read leaves the value alone";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  alarm(60);  // a reader that waits for a writer ends here
  EXPECT_FALSE(ReadJsonFile(pipe.c_str(), read));
  alarm(0);
}

TEST(JsonReader, TurnsFractionsIntoSizesForALocaleWithACommaAndNothingElse) {
  const struct {
    const char *document, *whole;
  } cases[] = {
      {R"({"\"1.5": "2.5", "b": [1.5,-1.5,15,0.99,1e3,1.5E+8]})",
       R"({"\"1.5": "2.5", "b": [1 ,-1 ,15,0 ,1000 ,150000000 ]})"},
      {"/*/ \" */1.5", "/*/ \" */1 "},
      {"// 1.5\r1.5", "// 1.5\r1 "},
      {"/**//* 1.5 */1E3/1.5/*", "/**//* 1.5 */1000 /1 /*"},
      {"18446744073709551615.0 1e30 1. 1e", "-1  -1  1  1e"},
      {"1.5.5 -2.0", "1 .5 -1 "},
  };
  for (const auto& c : cases) EXPECT_EQ(WithWholeNumbers(c.document), c.whole);
}

TEST(JsonWriter, WritesAsciiOnOneLineAndTextsForPeopleAsTheyAre) {
  Json::Value document;
  document["texts"].append("Gr\u00f6\u00dfe\n\x7f");
  document["texts"].append("cut \xe5\x90");
  document["numbers"].append(0.1 + 0.2);
  document["numbers"].append(40.0);
  document["numbers"].append(Json::UInt64{18446744073709551615U});
  document["none"]["of it"] = Json::Value();
  EXPECT_EQ(WriteCompact(document),
            R"({"none":{"of it":null},"numbers":[0.3,40.0,18446744073709551615],)"
            R"("texts":["Gr\u00f6\u00dfe\n)"
            "\x7f"
            R"(","cut \ufffd\ufffd"]})");
  EXPECT_EQ(WritePretty(document),
            "{\n  \"none\": {\n    \"of it\": null\n  },\n"
            "  \"numbers\": [ 0.3, 40.0, 18446744073709551615 ],\n"
            "  \"texts\": [ \"Gr\u00f6\u00dfe\\n\x7f\", \"cut \xe5\x90\" ]\n}\n");
}

}  // namespace
}  // namespace common
