#include "platform/linux/collector/mapping_status.h"

#include <gtest/gtest.h>

namespace {

using namespace linux_platform;

TEST(MappingStatus, TheStatusLineIsHeldAgainstWhatTheLayoutSurvives) {
  const std::string pool = " discard_passdown queue_if_no_space ";
  const struct {
    const char* type;
    std::string line;
    Health health;
    const char* why;
  } cases[] = {
      {"raid", "raid1 2 AA 65536/65536 idle 0 0 -", Health::Normal, ""},
      {"raid", "raid1 2 Aa 128/65536 recover 0 0 -", Health::Normal, ""},
      {"raid", "raid1 2 AD 65536/65536 idle 0 0 -", Health::Abnormal,
       "1 of 2 devices failed (raid1)"},
      {"raid", "raid1 3 ADD 65536/65536 idle 0", Health::Abnormal, "2 of 3 devices failed (raid1)"},
      {"raid", "raid1 2 DD 65536/65536 idle 0", Health::Danger, "2 of 2 devices failed (raid1)"},
      {"raid", "raid4 3 ADA 1/1 idle 0", Health::Abnormal, "1 of 3 devices failed (raid4)"},
      {"raid", "raid5_ls 3 ADA 1/1 idle 0", Health::Abnormal, "1 of 3 devices failed (raid5_ls)"},
      {"raid", "raid5_ls 3 ADD 1/1 idle 0", Health::Danger, "2 of 3 devices failed (raid5_ls)"},
      {"raid", "raid6_zr 5 DADAA 1/1 idle 0", Health::Abnormal, "2 of 5 devices failed (raid6_zr)"},
      {"raid", "raid6_zr 5 DADDA 1/1 idle 0", Health::Danger, "3 of 5 devices failed (raid6_zr)"},
      {"raid", "raid10 4 DADA 1/1 idle 0", Health::Abnormal, "2 of 4 devices failed (raid10)"},
      {"raid", "raid10 4 ADDA 1/1 idle 0", Health::Abnormal, "2 of 4 devices failed (raid10)"},
      {"raid", "raid10 4 AADD 1/1 idle 0", Health::Danger, "2 of 4 devices failed (raid10)"},
      {"raid", "raid10_far 4 DDAA 1/1 idle 0", Health::Abnormal,
       "2 of 4 devices failed (raid10_far)"},
      {"raid", "raid10_far 4 DDDA 1/1 idle 0", Health::Danger,
       "3 of 4 devices failed (raid10_far)"},
      {"raid", "raid0 2 AD 1/1 idle 0", Health::Danger, "1 of 2 devices failed (raid0)"},
      {"mirror", "2 253:1 253:2 1024/1024 1 AA 3 disk 253:0 A", Health::Normal, ""},
      {"mirror", "2 253:1 253:2 1024/1024 1 AD 3 disk 253:0 A", Health::Abnormal,
       "1 of 2 copies failed"},
      {"mirror", "2 253:1 253:2 1024/1024 1 DD 1 core", Health::Danger, "2 of 2 copies failed"},
      {"thin-pool", "0 12/1024 364/384 - rw" + pool + "- 1024", Health::Normal, ""},
      {"thin-pool", "0 12/1000 380/400 - rw" + pool + "- 1024", Health::Abnormal,
       "95 % or more of its space is in use"},
      {"thin-pool", "0 950/1000 3/384 - rw" + pool + "- 1024", Health::Abnormal,
       "95 % or more of its metadata space is in use"},
      {"thin-pool", "0 12/1024 384/384 - out_of_data_space" + pool + "- 1024", Health::Danger,
       "it is out of space"},
      {"thin-pool", "0 12/1024 3/384 - ro" + pool + "- 1024", Health::Danger,
       "it has become read-only"},
      {"thin-pool", "0 12/1024 3/384 - rw" + pool + "needs_check 1024", Health::Danger,
       "its metadata need a check"},
      {"thin-pool", "Fail", Health::Danger, "it has failed"},
      {"thin-pool", "Error", Health::Danger, "it has failed"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    const auto status = JudgeMapping({{c.type, c.line}});
    ASSERT_TRUE(status);
    EXPECT_TRUE(status->understood);
    EXPECT_EQ(status->health, c.health);
    EXPECT_EQ(status->why, c.why);
  }
}

TEST(MappingStatus, TheWorstTargetCountsAndOtherTextsAreNotUnderstood) {
  SilenceDeviceMapper();
  const MappingTarget good = {"raid", "raid1 2 AA 1/1 idle 0"}, linear = {"linear", ""},
                      bad = {"raid", "raid1 2 AD 1/1 idle 0"}, worse = {"thin-pool", "Fail"};
  EXPECT_EQ(JudgeMapping({good, bad, linear, worse, good})->why, "it has failed");
  EXPECT_EQ(JudgeMapping({bad, good})->health, Health::Abnormal);
  EXPECT_FALSE(JudgeMapping({linear, {"thin", "8192 16383"}}));
  EXPECT_FALSE(JudgeMapping({}));
  for (const char* type : {"raid", "mirror", "thin-pool"}) {
    const auto status = JudgeMapping({{type, "what is this"}});
    ASSERT_TRUE(status) << type;
    EXPECT_FALSE(status->understood) << type;
    EXPECT_EQ(status->health, Health::Normal) << type;
  }
}

}  // namespace
