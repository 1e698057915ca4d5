#include "platform/linux/storage/md.h"

#include <gtest/gtest.h>

namespace {

using namespace linux_platform;

MdArray Array(const char* level, const char* state, int disks, int degraded,
              std::vector<const char*> members) {
  MdArray array;
  array.level = level;
  array.state = state;
  array.metadata = "1.2";
  array.disks = disks;
  array.degraded = degraded;
  for (const char* member : members) array.members.push_back({"sda", member, "0", true});
  return array;
}

TEST(Md, RedundancyDecides) {
  constexpr auto kNormal = Health::Normal, kAbnormal = Health::Abnormal, kDanger = Health::Danger;
  const struct {
    const char* why;
    MdArray array;
    Health health;
  } cases[] = {
      {"a healthy mirror", Array("raid1", "active", 2, 0, {"in_sync", "in_sync"}), kNormal},
      {"read-only by the admin", Array("raid5", "readonly", 3, 0, {"in_sync"}), kNormal},
      {"rebuilding", Array("raid1", "clean", 2, 1, {"in_sync", "spare"}), kAbnormal},
      {"one of two", Array("raid1", "clean", 2, 1, {"in_sync"}), kAbnormal},
      {"none of two", Array("raid1", "clean", 2, 2, {"faulty", "faulty"}), kDanger},
      {"the last member failing", Array("raid1", "broken", 2, 1, {"in_sync"}), kDanger},
      {"raid5 minus one", Array("raid5", "clean", 3, 1, {"in_sync", "in_sync"}), kAbnormal},
      {"raid5 minus two", Array("raid5", "write-pending", 3, 2, {"in_sync"}), kDanger},
      {"raid6 minus two", Array("raid6", "clean", 4, 2, {"in_sync", "in_sync"}), kAbnormal},
      {"raid6 minus three", Array("raid6", "clean", 4, 3, {"in_sync"}), kDanger},
      {"raid10 minus two", Array("raid10", "clean", 4, 2, {"in_sync", "in_sync"}), kAbnormal},
      {"raid10 broken", Array("raid10", "broken", 4, 2, {"in_sync"}), kDanger},
      {"stripes whole", Array("raid0", "clean", 2, 0, {"in_sync", "in_sync"}), kNormal},
      {"a stripe faulty", Array("raid0", "clean", 2, 0, {"in_sync", "in_sync,faulty"}), kDanger},
      {"a stripe missing", Array("raid0", "clean", 2, 0, {"in_sync"}), kDanger},
      {"asks for replacement",
       Array("raid1", "clean", 2, 0, {"in_sync", "in_sync,want_replacement"}), kAbnormal},
      {"sparse by design", Array("raid1", "clean", 8, 6, {"in_sync", "in_sync"}), kNormal},
      {"sparse, but a fault", Array("raid1", "clean", 8, 6, {"in_sync", "in_sync", "faulty"}),
       kAbnormal},
      {"a container", Array("container", "inactive", 0, 0, {}), kNormal},
      {"being stopped", Array("raid1", "clear", 2, 2, {}), kNormal},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(JudgeMd(c.array, true), c.health);
  }
}

TEST(Md, OnlyTheFillingOfTheLastMemberAloneLooksLikeAFirstBuild) {
  const auto array = [](const char* level, int degraded, std::initializer_list<const char*> states,
                        const char* slot) {
    MdArray made = Array(level, "clean", 3, degraded, states);
    made.members.back().slot = slot;
    return made;
  };
  EXPECT_TRUE(LooksLikeFirstBuild(array("raid5", 1, {"in_sync", "in_sync", "spare"}, "2")));
  EXPECT_FALSE(LooksLikeFirstBuild(array("raid5", 1, {"in_sync", "in_sync", "spare"}, "1")));
  EXPECT_FALSE(LooksLikeFirstBuild(array("raid5", 1, {"in_sync", "in_sync", "spare"}, "none")));
  EXPECT_FALSE(LooksLikeFirstBuild(array("raid6", 1, {"in_sync", "in_sync", "spare"}, "2")));
  EXPECT_FALSE(
      LooksLikeFirstBuild(array("raid5", 1, {"faulty", "in_sync", "in_sync", "spare"}, "2")));
}

TEST(Md, AnInactiveArrayIsWorseWhenItWasExpected) {
  MdArray array = Array("raid5", "inactive", 3, 0, {"spare"});
  EXPECT_EQ(JudgeMd(array, true), Health::Danger);
  EXPECT_EQ(JudgeMd(array, false), Health::Abnormal);
  array.metadata = "external:imsm";
  EXPECT_EQ(JudgeMd(array, true), Health::Normal);
}

TEST(Md, AStripeThatWasPulledIsMissing) {
  MdArray array = Array("raid0", "clean", 2, 0, {"in_sync", "in_sync"});
  array.members[1].present = false;
  EXPECT_EQ(JudgeMd(array, true), Health::Danger);
}

}  // namespace
