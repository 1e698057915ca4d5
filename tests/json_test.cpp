// The reader and the writer of JSON, where no machine's answer shows what they do.
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "common/json_lists.h"
#include "common/json_reader.h"
#include "common/json_writer.h"
#include "tests/support/comma_locale.h"
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

// In a thread with the stack of a small server's.
void* ReadWhatIsDeepOrLong(void*) {
  Json::Value rows, value;
  EXPECT_TRUE(ReadJsonFile(VELA_SCENARIOS "/../tests/fixtures/json_bounds.json", rows));
  constexpr const char* kResults[] = {"Whole", "Invalid", "TooLarge"};
  for (Json::ArrayIndex i = 1; i < rows.size(); ++i) {
    const Json::Value& row = rows[i];
    const std::string repeated = row[3].asString(), again = row[5].asString();
    std::string text = row[1].asString(), closing;
    for (int times = row[2].asInt(); times > 0; --times, closing += again) text += repeated;
    text += row[4].asString() + closing + row[6].asString();
    const auto parsed = static_cast<std::size_t>(TryParseJson(text, value));
    const auto listed = static_cast<std::size_t>(ParseJsonLists(text, value, [](auto, auto&) {}));
    EXPECT_EQ(row[7].asString(), kResults[parsed]) << row[0].asString();
    EXPECT_EQ(row[8].asString(), kResults[listed]) << row[0].asString();
  }
  return nullptr;
}

TEST(JsonReader, FollowsAsManyLevelsAndValuesAsASmallStackBears) {
  pthread_attr_t small;
  pthread_t thread;
  pthread_attr_init(&small);
  pthread_attr_setstacksize(&small, std::size_t{256} << 10);
  ASSERT_EQ(pthread_create(&thread, &small, ReadWhatIsDeepOrLong, nullptr), 0);
  pthread_join(thread, nullptr);
}

TEST(JsonLists, AreReadInPiecesAsTheDocumentIsReadWhole) {
  Json::Value documents;
  ASSERT_TRUE(ReadJsonFile(VELA_SCENARIOS "/../tests/fixtures/json_documents.json", documents));
  for (const Json::Value& each : documents) {
    Json::Value whole, pieces, lists(Json::objectValue);
    const auto take = [&](auto list, auto& element) { lists[std::string(list)].append(element); };
    const bool valid = ParseJson(each.asString(), whole);
    const Parsed parsed = ParseJsonLists(each.asString(), pieces, take, 1);
    for (const std::string& name : lists.getMemberNames())
      if (valid) pieces[name] = lists[name];
    EXPECT_TRUE((parsed == Parsed::Whole) == valid && pieces == whole) << each.asString();
  }
}

// What the array `text` is read as; "invalid" when it is none.
std::string Read(const std::string& text) {
  Json::Value value;
  if (!ParseJson(text, value)) return "invalid";
  const bool real = value.isArray() && value[0].type() == Json::realValue;
  return (real ? "real " : "") + WriteCompact(value);
}

TEST(JsonReader, ReadsEveryNumberAlikeWhereItHasAComma) {
  Json::Value documents;
  ASSERT_TRUE(ReadJsonFile(VELA_SCENARIOS "/../tests/fixtures/json_numbers.json", documents));
  for (const Json::Value& document : documents) {
    const std::string usual = Read(document.asString());
    const CommaLocale locale;
    EXPECT_EQ(Read(document.asString()), usual) << document.asString();
  }
  EXPECT_EQ(Read("[5-0.0]") + Read("[1.5e-999]") + Read("[-.5]"), "invalidreal [0.0]real [-0.5]");
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
