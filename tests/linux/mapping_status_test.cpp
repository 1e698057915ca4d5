#include "platform/linux/collector/mapping_status.h"

#include <gtest/gtest.h>

#include "tests/linux/table.h"

namespace {

using namespace linux_platform;

TEST(MappingStatus, TheStatusLineIsHeldAgainstWhatTheLayoutSurvives) {
  for (const auto& row : ReadTable("mapping-status", 4)) {
    SCOPED_TRACE(row[1]);
    const auto status = JudgeMapping({{row[0], row[1]}});
    ASSERT_TRUE(status);
    EXPECT_TRUE(status->understood);
    EXPECT_EQ(status->health, row[2] == "Danger"     ? Health::Danger
                              : row[2] == "Abnormal" ? Health::Abnormal
                                                     : Health::Normal);
    const std::string lost = std::to_string(status->failed) + " of " + std::to_string(status->of);
    EXPECT_EQ(status->failed == 0 ? status->why : lost, row[3]);
  }
}

TEST(MappingStatus, TheWorstTargetCountsAndOtherTextsAreNotUnderstood) {
  SilenceDeviceMapper();
  const MappingTarget good = {"raid", "raid1 2 AA 1/1 idle 0"}, linear = {"linear", ""},
                      bad = {"raid", "raid1 2 AD 1/1 idle 0"}, worse = {"thin-pool", "Fail"};
  EXPECT_EQ(JudgeMapping({good, bad, linear, worse, good})->why, "it has failed");
  EXPECT_EQ(JudgeMapping({bad, good})->health, Health::Abnormal);
  const MappingTarget halfLost = {"multipath", "2 0 0 0 1 1 A 0 2 0 8:16 F 3 8:32 A 0"};
  EXPECT_EQ(JudgeMapping({good, halfLost, good})->failed, 1);
  EXPECT_FALSE(JudgeMapping({linear, {"thin", "8192 16383"}}));
  EXPECT_FALSE(JudgeMapping({}));
  for (const char* type : {"raid", "mirror", "thin-pool", "cache", "snapshot", "integrity", "vdo",
                           "multipath", "writecache"}) {
    const auto status = JudgeMapping({{type, "what is this"}});
    ASSERT_TRUE(status) << type;
    EXPECT_FALSE(status->understood) << type;
    EXPECT_EQ(status->health, Health::Normal) << type;
  }
}

}  // namespace
