// What a platform reports of its sources within one request.
#include "platform/status/source_status.h"

#include <sstream>
#include <thread>

#include <gtest/gtest.h>

namespace source_status {
namespace {

void Report(char kind, const char* words) {
  if (kind == 'r') SayRead(Source::Ups);
  if (kind == 'a') SayAbsent(Source::Ups, "%s", words);
  if (kind == 'f') SayFailed(Source::Ups, "%s", words);
  SourceScope* scope = std::string("sRAF").find(kind) < 4 ? new SourceScope(Source::Ups) : nullptr;
  if (kind == 'R') scope->Read("%s", words);
  if (kind == 'A') scope->Absent("%s", words);
  if (kind == 'F') scope->Failed("%s", words);
  delete scope;
}

// What is reported of the UPS after `said`.
VELASourceReport ReportAfter(const std::string& said) {
  VELAPlatformSourcesReset();
  std::istringstream words(said);
  for (std::string word; words >> word;) Report(word[0], word.c_str() + 1);
  VELASourceReport reports[kSourceCount + 1] = {};
  EXPECT_EQ(VELAPlatformSources(reports, kSourceCount + 1), kSourceCount);
  EXPECT_STREQ(reports[kSourceCount - 1].name, "SAN");
  EXPECT_STREQ(reports[kSourceCount - 1].reason, "not asked");
  EXPECT_EQ(reports[kSourceCount].name, nullptr);
  return reports[static_cast<int>(Source::Ups)];
}

TEST(SourceStatus, TheWorstStandsWithItsFirstWords) {
  const struct {
    const char* said;  // a letter each: read, absent, failed; small: alone, large: in a scope
    int state;
    const char* reason;
  } cases[] = {
      {"", 0, "not asked"}, {"r", 1, ""},      {"s", 1, ""},        {"ax", 0, "x"},
      {"Ax ay", 0, "x"},    {"ax r", 1, ""},   {"ax Ry", 1, "y"},   {"r ax", 1, ""},
      {"s Rx", 1, "x"},     {"Rx r", 1, "x"},  {"Rx Ry", 1, "x"},   {"r fx", 2, "x"},
      {"fx fy", 2, "x"},    {"Fx Fy", 2, "x"}, {"fx s ay", 2, "x"}, {"ax Fy Rz", 2, "y"},
  };
  for (const auto& c : cases) {
    const VELASourceReport report = ReportAfter(c.said);
    EXPECT_EQ(report.state, c.state) << c.said;
    EXPECT_STREQ(report.reason, c.reason) << c.said;
    EXPECT_STREQ(report.name, "UPS");
  }
  EXPECT_EQ(std::string(ReportAfter("f" + std::string(300, 'x')).reason), std::string(239, 'x'));
}

TEST(SourceStatus, TheTimesOfASourceAddUpAndASmallerCapacityIsKept) {
  VELAPlatformSourcesReset();
  for (int i = 0; i < 2; ++i) {
    const SourceScope scope(Source::Network);
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
  }
  VELASourceReport reports[2] = {};
  EXPECT_EQ(VELAPlatformSources(reports, 1), kSourceCount);
  EXPECT_GE(reports[0].microseconds, 6000U);
  EXPECT_EQ(reports[1].name, nullptr);
}

}  // namespace
}  // namespace source_status
