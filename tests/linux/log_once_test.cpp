#include "platform/linux/base/log_once.h"

#include <gtest/gtest.h>

#include "tests/linux/source_statuses.h"
#include "tests/linux/system_log.h"

namespace {

using Lines = std::vector<std::string>;

TEST(LogOnce, LogsTheFirstFailureOfARowInItsOwnWords) {
  VELAPlatformSourcesReset();
  TakeSystemLog();
  linux_platform::LogOnce failures("UPS", "");
  source_status::SourceScope scope(source_status::Source::Ups);
  failures.Report(scope, "");
  EXPECT_TRUE(failures.Tell(scope, "at 100 %s"));
  EXPECT_EQ(SourceReports()["UPS"].reason, "at 100 %s");
  EXPECT_FALSE(failures.Tell(scope, "again"));
  const Lines first = {"warning UPS: at 100 %s (said once until it is read again)"};
  EXPECT_EQ(TakeSystemLog(), first);
  failures.Report(scope, "");
  failures.Report(scope, "anew");
  EXPECT_EQ(TakeSystemLog().size(), 1U) << "it had recovered";
  EXPECT_EQ(SourceReports()["UPS"].state, 2);
}

TEST(LogOnce, OfWhatItsOwnerAcceptsTheLogHearsNothing) {
  VELAPlatformSourcesReset();
  TakeSystemLog();
  linux_platform::LogOnce failures("UPS", "");
  source_status::SourceScope scope(source_status::Source::Ups);
  const linux_platform::Trouble unwatched = {"nobody watches it", "watch it"};
  source_status::Accept(source_status::Source::Ups);
  failures.Report(scope, unwatched);
  EXPECT_TRUE(TakeSystemLog().empty());
  VELAPlatformSourcesReset();
  failures.Report(scope, unwatched);
  EXPECT_EQ(TakeSystemLog().size(), 1U) << "not any more";
  source_status::Accept(source_status::Source::Ups);
  failures.Recovered();
  EXPECT_TRUE(failures.Tell(scope, "it failed")) << "a failure is never accepted";
}

}  // namespace
