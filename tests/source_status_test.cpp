// What a platform reports of its sources within one request.
#include "platform/status/source_status.h"

#include <sstream>
#include <thread>

#include <gtest/gtest.h>

namespace source_status {
namespace {

// A letter each: read, absent, failed; small: alone, large: as the end of a scope.
void Report(char kind, const char* words) {
  if (kind == 'r') return SayRead(Source::Ups);
  if (kind == 'a') return SayAbsent(Source::Ups, "%s", words);
  if (kind == 'f') return SayFailed(Source::Ups, "%s", words);
  SourceScope scope(Source::Ups);
  if (kind == 'R') scope.Read("%s", words);
  if (kind == 'A') scope.Absent("%s", words);
  if (kind == 'F') scope.Failed("%s", words);
}

TEST(SourceStatus, TheWorstStandsWithItsFirstWords) {
  std::istringstream cases(  // what is reported, and the status that it amounts to
      "=0 not asked;r=1 ;s=1 ;ax=0 x;Ax ay=0 x;ax r=1 ;ax Ry=1 y;r ax=1 ;s Rx=1 x;Rx r=1 x;"
      "Rx Ry=1 x;r fx=2 x;fx fy=2 x;Fx Fy=2 x;fx s ay=2 x;ax Fy Rz=2 y;f" +
      std::string(300, 'x') + "=2 " + std::string(239, 'x'));
  for (std::string said, status; getline(cases, said, '=') && getline(cases, status, ';');) {
    VELAPlatformSourcesReset();
    std::istringstream words(said);
    for (std::string word; words >> word;) Report(word[0], word.c_str() + 1);
    VELASourceReport reports[kSourceCount] = {};
    EXPECT_EQ(VELAPlatformSources(reports, kSourceCount - 1), kSourceCount);
    EXPECT_EQ(reports[kSourceCount - 1].name, nullptr) << "beyond the capacity";
    const VELASourceReport& ups = reports[static_cast<int>(Source::Ups)];
    EXPECT_EQ(std::to_string(ups.state) + " " + ups.reason, status) << said;
  }
}

TEST(SourceStatus, TheTimesOfASourceAddUp) {
  VELAPlatformSourcesReset();
  for (const int milliseconds : {30, 0}) {
    const SourceScope scope(Source::Network);
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }
  VELASourceReport report = {};
  VELAPlatformSources(&report, 1);
  EXPECT_GE(report.microseconds, 30'000U);
}

}  // namespace
}  // namespace source_status
