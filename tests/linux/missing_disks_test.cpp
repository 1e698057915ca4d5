// Who a disk was that is gone, from one look of the collector to the next.
#include <gtest/gtest.h>

#include "common/json_writer.h"
#include "platform/linux/contract/request.h"
#include "platform/linux/storage/missing_disks.h"
#include "tests/linux/machine_tree.h"

namespace {

using namespace linux_platform;

constexpr std::int64_t kDay = 86400;

class MissingDisks : public testing::Test {
 protected:
  // One round of the collector, that long after the first.
  void Look(std::int64_t after = 0) {
    seen = RememberDisks(RequestScope()->GetStorage(), seen, 1'700'000'000 + after);
    seen = SeenDisks::FromJson(seen.ToJson());
    machine.Write("/var/lib/vela-platform/disks.json", common::WriteCompact(seen.ToJson()));
  }
  // The memory of the recorded machine gives way to this one.
  void LoseThird() {
    machine.Load("four-bays-that-lost-one");
    Look(kDay);
  }

  MachineTree machine = MachineTree("four-bays");
  SeenDisks seen;
};

TEST_F(MissingDisks, AreKnownByWhatWasSeenOfThemUntilAnotherHasTheirPlace) {
  Look();
  EXPECT_EQ(seen.disks.size(), 5U) << "a USB disk is no disk of the machine";
  EXPECT_TRUE(FindMissingDisks(RequestScope()->GetStorage()).empty());
  LoseThird();
  const auto missing = FindMissingDisks(RequestScope()->GetStorage());
  ASSERT_EQ(missing.size(), 1U);
  EXPECT_EQ(missing[0].name, "sdc");
  EXPECT_EQ(missing[0].parent, "md0");
  EXPECT_EQ(missing[0].identity.serial, "WD-WCC7K0000003");
  EXPECT_EQ(missing[0].identity.port, "ata3");
  EXPECT_EQ(missing[0].gone, 1'700'000'000 + kDay);
  Look(2 * kDay);
  EXPECT_EQ(seen.disks.back().gone, 1'700'000'000 + kDay) << "since it was first not there";
  machine.AddLine("disk sdf pci0000:00/0000:00:17.0/ata3/host2/target2:0:0/2:0:0:0 8:80");
  const std::string member = "/sys/devices/virtual/block/md0/md/dev-sdf/";
  for (const char* line : {"state = in_sync", "slot = 2", "block/size = 1"})
    machine.AddLine(member + line);
  machine.AddLine("/sys/devices/virtual/block/md0/md/degraded = 0");
  Look(3 * kDay);
  EXPECT_EQ(seen.disks.size(), 5U) << "its place is another's, and it is forgotten";
}

TEST_F(MissingDisks, AreForgottenAfterAYear) {
  Look();
  LoseThird();
  Look(366 * kDay);
  EXPECT_EQ(seen.disks.size(), 5U);
  Look(368 * kDay);
  EXPECT_EQ(seen.disks.size(), 4U);
}

TEST_F(MissingDisks, MayStillBeInTheMachine) {
  Look();
  machine.AddLine("- /sys/devices/virtual/block/md0/md/dev-sdc1");
  machine.AddLine("/sys/devices/virtual/block/md0/md/degraded = 1");
  Look(kDay);
  const auto missing = FindMissingDisks(RequestScope()->GetStorage());
  ASSERT_EQ(missing.size(), 1U);
  EXPECT_EQ(missing[0].name, "Disk 4");
  EXPECT_TRUE(missing[0].isThere) << "taken out of the array, and not of its bay";
}

}  // namespace
