#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "common/json_reader.h"
#include "platform/linux/scan/lynis_report.h"
#include "tests/linux/temporary_root.h"

namespace {

using linux_platform::ConvertLynisReport;

constexpr std::time_t kDay = 24 * 60 * 60, kNow = 1'800'000'000;

std::string Status(const std::string& lines, const Json::Value& before = Json::Value()) {
  return ConvertLynisReport(lines + "finish=true\n", before, kNow)["sysStatus"].asString();
}

TEST(LynisReport, OnlyWhatSmellsOfAnIntruderOrLetsOneInIsDanger) {
  const struct {
    const char* lines;
    const char* status;
  } cases[] = {
      {"", "safe"},
      {"suggestion[]=AUTH-9204|No warning|-|-|\n", "safe"},
      {"warning[]=AUTH-9204|Multiple users with UID 0 found in passwd file|-|-|\n", "danger"},
      {"warning[]=AUTH-9283|Found accounts without password|-|-|\r\n", "danger"},
      {"warning[]=MALW-3288|ClamAV found something|-|-|\n", "danger"},
      {"warning[]=AUTH-9208|Multiple accounts found with same UID|-|-|\n", "warning"},
      {"warning[]=FIRE-4512|iptables module(s) loaded, but no rules active|-|-|\n", "warning"},
      {"warning[]=PKGS-7392|Found one or more vulnerable packages.|-|-|\n", "warning"},
      {"warning[]=\nwarning[]=|\nwarning[]=MALW\n", "warning"},
      {"warning[]=FIRE-4512|x|-|-|\nwarning[]=AUTH-9204|y|-|-|\nwarning[]=NAME-1|z|-|-|\n",
       "danger"},
  };
  for (const auto& c : cases) EXPECT_EQ(Status(c.lines), c.status) << c.lines;
}

TEST(LynisReport, AnUnfinishedScanHasNoResult) {
  for (const char* report : {"", "finish=false\n", "warning[]=AUTH-9204|x|-|-|\nfinish=tr",
                             "# finish=true\n", "suggestion[]=finish=true\n"})
    EXPECT_TRUE(ConvertLynisReport(report, Json::Value(), kNow).isNull()) << report;
}

TEST(LynisReport, AnUpdateThatWaitsForMoreThanTwoWeeksIsDanger) {
  const std::string pending = "vulnerable_package[]=openssl\nwarning[]=PKGS-7392|x|-|-|\n";
  const auto since = [](const char* package, Json::Value time) {
    Json::Value before;
    before["vulnerableSince"][package] = std::move(time);
    return before;
  };
  const Json::Int64 exactly = kNow - 14 * kDay;
  EXPECT_EQ(Status(pending, since("openssl", exactly)), "warning");
  EXPECT_EQ(Status(pending, since("openssl", exactly - 1)), "danger");
  EXPECT_EQ(Status(pending, since("perl", exactly - 1)), "warning") << "that one was updated";
  EXPECT_EQ(Status("", since("openssl", exactly - 1)), "safe");
  EXPECT_EQ(Status(pending, since("openssl", "long ago")), "warning");
  EXPECT_EQ(Status(pending, since("openssl", 1e300)), "warning");
  EXPECT_EQ(Status(pending, since("openssl", Json::Value::minInt64)), "warning");
  const auto kept = [&](Json::Int64 known) {
    return ConvertLynisReport(pending + "finish=true", since("openssl", known),
                              kNow)["vulnerableSince"]["openssl"];
  };
  EXPECT_EQ(kept(kNow + 99 * kDay), Json::Int64{kNow}) << "a clock that was set back";
  EXPECT_EQ(kept(0), 0);
  EXPECT_EQ(kept(kNow - 1), Json::Int64{kNow - 1});
  // A tool that does not name them.
  const std::string unnamed = "warning[]=PKGS-7392|x|-|-|\n";
  const Json::Value first = ConvertLynisReport(unnamed + "finish=true", Json::Value(), kNow);
  EXPECT_EQ(ConvertLynisReport(unnamed + "finish=true", first, kNow + 15 * kDay)["sysStatus"],
            "danger");
  for (const char* odd : {"[]", "{\"vulnerableSince\": 5}", "7"}) {
    Json::Value before;
    common::ParseJson(odd, before);
    EXPECT_EQ(Status(pending, before), "warning") << odd;
  }
}

TEST(LynisReport, ARealReportOfAFreshMachineIsAWarning) {
  std::stringstream text;
  text << std::ifstream(FIXTURES "/lynis/fresh-machine.dat").rdbuf();
  const Json::Value result = ConvertLynisReport(text.str(), Json::Value(), kNow);
  EXPECT_EQ(result["sysStatus"], "warning");
  EXPECT_EQ(result["reasons"][0], "PKGS-7392: Found one or more vulnerable packages.");
  EXPECT_EQ(result["vulnerableSince"]["apt"], Json::Int64{kNow});
}

TEST(LynisResult, TheResultIsReplacedForAllToReadAndStaysWhenThereIsNoScan) {
  const TemporaryRoot root;
  const std::string report = root.Write("/report.dat", "finish=true\n");
  const std::string result = root.Path().string() + "/scan/systemResult.json";
  const auto run = [&](const std::string& arguments) {
    return WEXITSTATUS(std::system((VELA_LYNIS_RESULT " " + arguments + " 2>/dev/null").c_str()));
  };
  const std::string both = "--report " + report + " --result " + result;
  ASSERT_EQ(run(both), 0);
  struct stat status = {};
  ASSERT_EQ(stat(result.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0644U);
  Json::Value read;
  ASSERT_TRUE(common::ReadJsonFile(result.c_str(), read));
  EXPECT_EQ(read["sysStatus"], "safe");

  root.Write("/report.dat", "warning[]=AUTH-9204|x|-|-|\n");
  EXPECT_EQ(run(both), 1);
  EXPECT_EQ(run("--report /nowhere --result " + result), 1);
  EXPECT_EQ(run("--what"), 64);
  ASSERT_TRUE(common::ReadJsonFile(result.c_str(), read));
  EXPECT_EQ(read["sysStatus"], "safe") << "the last finished scan's";
}

}  // namespace
