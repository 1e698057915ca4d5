// What systemd says of units is asked for notes alone; the rest stands in whole machines
// (machines_test.cpp).
#include <gtest/gtest.h>

#include "platform/linux/notes/notes.h"
#include "tests/linux/machine_tree.h"
#include "tests/linux/private_bus.h"
#include "tests/linux/source_statuses.h"
#include "tests/linux/timeout_factor.h"

namespace {

std::string Ask() {
  VELAPlatformSourcesReset();
  linux_platform::GatherNotes();
  return ToldNotes("");
}

TEST(FailedUnits, OfBackupsAndStorageAreNotedAndAMuteSystemdIsNotAwaited) {
  const MachineTree root;
  linux_platform::CircuitBreaker::CloseAll();
  EXPECT_EQ(Ask(), "") << "without systemd";
  PrivateBus bus(root);
  if (!bus.Runs()) GTEST_SKIP() << "needs dbus-daemon";
  for (const char* unit : {"mnt-data.mount", "a-backup@b.service", "nginx.service"})
    bus.Say(unit, "ActiveState", "failed");
  bus.Say("restic.service", "ActiveState", "active");
  EXPECT_EQ(Ask(),
            "unit_failed a-backup@b.service 0/0 [systemctl status a-backup@b.service]"
            "unit_failed mnt-data.mount 0/0 [systemctl status mnt-data.mount]");
  bus.Mute();
  const TimeoutFactor once(1);
  EXPECT_EQ(Ask(), "");
}

}  // namespace
