#include "platform/linux/base/settings.h"

#include <gtest/gtest.h>

#include <regex>

#include "tests/linux/source_statuses.h"
#include "tests/linux/table.h"
#include "tests/linux/temporary_root.h"
#include "vela_conf.h"
#include "velac.h"

namespace {

using linux_platform::Settings;

TEST(Settings, ALineSetsAKeyHoweverItIsWritten) {
  const std::pair<const char*, const char*> bytes[] = {
      {R"(\\n)", "\n"}, {R"(\\r)", "\r"}, {R"(\\t)", "\t"}, {R"(\\s)", " "}};
  for (const auto& row : ReadTable("settings-lines", 2)) {
    std::string text = row[0];
    for (const auto& [name, byte] : bytes) text = std::regex_replace(text, std::regex(name), byte);
    const Settings settings(text);
    const char* value = settings.Text("k");
    EXPECT_EQ(value == nullptr ? "not set" : "[" + std::string(value) + "]", row[1]) << row[0];
  }
}

TEST(Settings, YesAndListsHaveOneMeaning) {
  const Settings settings("a=yes\nb=true\nc=1\nd=Yes\ne=0\nf=yes,\nlist=, a;b\t c,,\nempty=");
  for (const char* key : {"a", "b", "c"}) EXPECT_TRUE(settings.Yes(key)) << key;
  for (const char* key : {"d", "e", "f", "none"}) EXPECT_FALSE(settings.Yes(key)) << key;
  EXPECT_EQ(settings.List("list"), (std::vector<std::string_view>{"a", "b", "c"}));
  EXPECT_TRUE(settings.List("empty").empty() && settings.List("none").empty());
  const Settings copy = settings;
  EXPECT_STREQ(copy.Text("c"), "1");
}

TEST(VelaConf, CurrentSettingsAndFactoryDefaultsAreSeparateSources) {
  TemporaryRoot root;
  root.Write("/etc/velainfo.conf", "ratio=\"0.2\"\nempty=\n");
  root.Write("/etc.defaults/velainfo.conf", "ratio=\"0.1\"\nmaxdisks=\"4\"");
  const VelaConf conf;
  EXPECT_STREQ(conf.Info("ratio", "x"), "0.2");
  EXPECT_STREQ(conf.Def("ratio", "x"), "0.1");
  EXPECT_STREQ(conf.Info("maxdisks", "x"), "x");
  EXPECT_STREQ(conf.Info("maxdisks", nullptr), "");
  EXPECT_STREQ(conf.Info("empty", "x"), "");
  EXPECT_TRUE(conf.DefCheckValue("maxdisks", "4", false));
  EXPECT_FALSE(conf.DefCheckValue("maxdisks", "40", false));
  EXPECT_FALSE(conf.InfoCheckValue("maxdisks", "", false)) << "absent is not empty";
}

TEST(VelaConf, AcceptNamesTheSourcesThatMayBeUnwatchedAndWrongWordsAreTold) {
  using source_status::Source, source_status::State;
  TemporaryRoot root;
  root.Write("/etc/velainfo.conf", "accept = \"SMART, High-Availability smrt upss\"\n");
  VELAPlatformSourcesReset();
  const VelaConf conf;
  Say(Source::Smart, State::Unwatched, "", "x");
  Say(Source::HighAvailability, State::Unwatched, "", "x");
  Say(Source::Ups, State::Unwatched, "", "x");
  auto reports = SourceReports();
  EXPECT_EQ(reports["SMART"].Name(), "accepted");
  EXPECT_EQ(reports["high availability"].Name(), "accepted");
  EXPECT_EQ(reports["UPS"].Name(), "unwatched");
  EXPECT_EQ(reports["configuration"].Name() + ": " + reports["configuration"].reason,
            "read: \"accept\" in /etc/velainfo.conf names no source with: smrt, upss");
}

TEST(FileGetKeyValue, AValueFitsWithItsNulOrNotAtAll) {
  TemporaryRoot root;
  root.Write("/etc/a.conf", "short=" + std::string(31, 'a') + "\nlong=" + std::string(32, 'b'));
  const struct {
    const char *path, *key;
    int size;
    unsigned error;
  } cases[] = {{"/etc/a.conf", "long", -1, 0x0902},
               {"/etc/a.conf", "none", -1, 0x0901},
               {"/etc/none.conf", "short", -1, 0x0900},
               {nullptr, "short", -1, 0x0D00},
               {"/etc/a.conf", "short", 31, 0},
               {"/etc.defaults/velainfo.conf", "supportsystempwarning", 3, 0}};
  char buffer[32] = "untouched";
  for (const auto& c : cases) {
    SCOPED_TRACE(c.key);
    EXPECT_EQ(VLIBCFileGetKeyValue(c.path, c.key, buffer, 32, 0), c.size);
    if (c.size >= 0) continue;
    EXPECT_EQ(VLIBCErrGet(), c.error);
    EXPECT_STREQ(buffer, "untouched");
  }
  EXPECT_STREQ(buffer, "yes") << "built in until a file is installed";
  EXPECT_STREQ(VLIBCErrorGetFile(), "platform/linux/contract/configuration.cpp");
  root.Write("/etc.defaults/velainfo.conf", "maxdisks=\"4\"\n");
  EXPECT_LT(VLIBCFileGetKeyValue(cases[5].path, cases[5].key, buffer, 32, 0), 0);
}

TEST(VelaConf, AFileThatCannotBeReadWholeIsSaid) {
  TemporaryRoot root;
  VELAPlatformSourcesReset();
  { const VelaConf healthy; }
  EXPECT_EQ(SourceReports()["configuration"].state, 1) << "missing files are simply empty";
  root.Write("/etc/velainfo.conf", "k=v\nhalf=" + std::string(64 * 1024, 'x'));
  EXPECT_STREQ(VelaConf().Info("k", ""), "v");
  EXPECT_STREQ(VelaConf().Info("half", "not set"), "not set");
  EXPECT_EQ(SourceReports()["configuration"].reason,
            "/etc/velainfo.conf is larger than 64 KiB; only its beginning was read");
  VELAPlatformSourcesReset();
  std::filesystem::remove(root.Path() / "etc/velainfo.conf");
  std::filesystem::create_directory(root.Path() / "etc/velainfo.conf");
  EXPECT_STREQ(VelaConf().Info("k", "default"), "default");
  EXPECT_EQ(SourceReports()["configuration"].reason,
            "/etc/velainfo.conf could not be read: Is a directory");
}

TEST(FileMemo, AFileIsParsedOnceAndNothingIsKeptThatCouldNotBeRead) {
  linux_platform::FileMemo<std::string> memo;
  int parsed = 0;
  const auto read = [&](const char* path) {
    const auto parse = [&parsed](auto, const std::string& text) {
      ++parsed;
      return text;
    };
    return memo.Of(path, 64, parse)->size();
  };
  for (int again = 0; again < 2; ++again) EXPECT_EQ(read(FIXTURES), 0U) << "a folder has no text";
  for (int again = 0; again < 3; ++again) EXPECT_EQ(read(FIXTURES "/board.umockdev"), 64U);
  EXPECT_EQ(parsed, 3);
}

TEST(FileExist, OnlyAFileCounts) {
  TemporaryRoot root;
  root.Write("/usr/local/bin/tool", "");
  EXPECT_TRUE(VLIBCFileExist("/usr/local/bin/tool"));
  EXPECT_FALSE(VLIBCFileExist("/usr/local/bin"));
  EXPECT_FALSE(VLIBCFileExist("/usr/local/bin/none"));
}

}  // namespace
