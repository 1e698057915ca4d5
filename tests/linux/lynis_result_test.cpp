#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "common/json_reader.h"
#include "platform/linux/evidence/evidence.h"
#include "platform/linux/scan/lynis_report.h"
#include "tests/linux/table.h"
#include "tests/linux/temporary_root.h"

namespace {

using linux_platform::ConvertLynisReport;

constexpr std::time_t kNow = 1'800'000'000;

TEST(LynisReport, IsJudgedAsItsFilesNameSays) {
  for (const auto& entry : std::filesystem::directory_iterator(FIXTURES "/lynis")) {
    const std::string name = entry.path().filename();
    const std::string text = (std::ostringstream() << std::ifstream(entry.path()).rdbuf()).str();
    const Json::Value result = ConvertLynisReport(text, Json::Value(), kNow);
    EXPECT_EQ(result.isNull() ? "none" : result["sysStatus"].asString(),
              name.substr(0, name.find('-')))
        << name;
  }
}

TEST(LynisReport, AnUpdateThatWaitsForMoreThanTwoWeeksIsDanger) {
  for (const auto& row : ReadTable("lynis-updates", 4)) {
    SCOPED_TRACE(row[0]);
    Json::Value before;
    ASSERT_TRUE(common::ParseJson(row[1], before));
    const Json::Value result = ConvertLynisReport(
        "vulnerable_package[]=openssl\nwarning[]=PKGS-7392|x|-|-|\nfinish=true", before, kNow);
    EXPECT_EQ(result["sysStatus"], row[2]);
    EXPECT_EQ(result["vulnerableSince"]["openssl"].asInt64(), std::stoll(row[3]));
    EXPECT_EQ(ConvertLynisReport("finish=true", before, kNow)["sysStatus"], "safe");
  }
  // A tool that does not name them.
  const char* unnamed = "warning[]=PKGS-7392|x|-|-|\nfinish=true";
  const Json::Value first = ConvertLynisReport(unnamed, Json::Value(), kNow);
  EXPECT_EQ(ConvertLynisReport(unnamed, first, kNow + 15 * 86'400)["sysStatus"], "danger");
}

// What a person is told of a result, whoever wrote it.
TEST(LynisReport, OnlyWhatMadeItADangerIsTold) {
  for (const auto& row : ReadTable("scan-evidence", 2)) {
    Json::Value result;
    if (!common::ParseJson(row[0], result))
      result =
          ConvertLynisReport(std::regex_replace(row[0] + "; finish=true", std::regex("; "), "\n"),
                             Json::Value(), kNow);
    std::string told;
    linux_platform::TellScanEvidence(result, [&told](const VELAEvidence& record) {
      told += std::string(told.empty() ? "" : "; ") + record.key + " " + record.part + " '" +
              record.words + "' " + std::to_string(record.figure) + " [" + record.show + "]";
    });
    EXPECT_EQ(told, row[1]);
  }
}

TEST(LynisResult, TheResultIsReplacedForAllToReadAndStaysWhenThereIsNoScan) {
  const TemporaryRoot root;
  const std::string result = root.Path() / "scan/systemResult.json";
  const auto run = [&](const std::string& arguments) {
    return WEXITSTATUS(std::system((VELA_LYNIS_RESULT " " + arguments + " 2>/dev/null").c_str()));
  };
  const auto told = [&] {
    Json::Value document;
    EXPECT_TRUE(common::ReadJsonFile(result.c_str(), document));
    EXPECT_TRUE(document["vulnerableSince"]["apt"].isInt64());
    return document["sysStatus"].asString() + ", " + document["reasons"][0].asString();
  };
  const std::string expected = "warning, PKGS-7392: Found one or more vulnerable packages.";
  ASSERT_EQ(run("--report " FIXTURES "/lynis/warning-on-a-fresh-machine.dat --result " + result),
            0);
  EXPECT_EQ(told(), expected);
  EXPECT_EQ(std::filesystem::status(result).permissions(), std::filesystem::perms{0644});

  const std::string unfinished = root.Write("/report.dat", "warning[]=AUTH-9204|x|-|-|\n");
  EXPECT_EQ(run("--report " + unfinished + " --result " + result), 1);
  EXPECT_EQ(run("--report /nowhere --result " + result), 1);
  EXPECT_EQ(run("--what"), 64);
  EXPECT_EQ(told(), expected) << "the last finished scan's";
}

}  // namespace
