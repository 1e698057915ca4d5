#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "platform/linux/base/deadline.h"
#include "platform/linux/base/settings.h"
#include "tests/linux/machine_snapshot.h"
#include "tests/linux/private_bus.h"
#include "tests/linux/source_statuses.h"
#include "tests/linux/system_log.h"
#include "tests/linux/table.h"
#include "velac.h"

namespace {

SourceReport Said() { return SourceReports()["high availability"]; }

// What a request makes of both queries; "off" where nothing runs.
std::string Ask() {
  VELAPlatformSourcesReset();
  if (VELAHAIsRunning() == 0) return "off";
  char text[1024] = {};
  const int result = VELAHAGetOverviewStatusDL(text, sizeof text);
  EXPECT_EQ(result, *text != '\0' ? 0 : -1);
  return text;
}

class HighAvailabilityTest : public testing::Test {
 protected:
  HighAvailabilityTest() { Forget(); }
  ~HighAvailabilityTest() override { Forget(); }
  // The platform remembers across requests: a machine without a cluster forgets.
  void Forget() {
    for (const char* path : {"usr", "etc", "proc/net", "proc/drbd"})
      std::filesystem::remove_all(root_.Path() / path);
    linux_platform::CircuitBreaker::CloseAll();
    EXPECT_EQ(Ask(), "off");
    EXPECT_EQ(Said().reason, "neither Pacemaker nor DRBD runs here");
    TakeSystemLog();
  }
  // Lets crm_mon print that document of tests/fixtures/linux/ha/.
  void Monitor(const std::string& document) {
    const std::string file = FIXTURES "/ha/" + document + ".xml";
    root_.Install("/usr/sbin/crm_mon", "test \"$*\" = '-1 --output-as=xml' && cat " + file +
                                           " && ! grep -q 'Not connected' " + file);
  }
  // As systemctl does, of a unit that is not below this root; or a file of DRBD.
  void Enable(const std::string& unit) {
    if (!unit.ends_with(".service")) root_.TemporaryRoot::Write("/etc/drbd.d/" + unit, "");
    root_.TemporaryRoot::Write("/etc/corosync/corosync.conf", "");
    const auto wants = root_.Path() / "etc/systemd/system/multi-user.target.wants";
    std::filesystem::create_directories(wants);
    std::filesystem::create_symlink("/nowhere", wants / unit);
  }
  // As /proc/net/unix shows a process that listens there.
  void Listen(const std::string& name) {
    root_.TemporaryRoot::Write("/proc/net/unix",
                               "Num       RefCount Protocol Flags    Type St Inode Path\n"
                               "0: 00000002 00000000 00010000 0001 01 12345 " +
                                   name);
  }

  MachineSnapshot root_;
};

TEST_F(HighAvailabilityTest, WhatRunsIsToldAndTheWorseOfBothCounts) {
  for (auto row : ReadTable("cluster-services", 6)) {
    SCOPED_TRACE(testing::PrintToString(row));
    Forget();
    for (std::string& cell : row) std::ranges::replace(cell, ';', '\n');
    if (!row[0].empty()) Listen(row[0]);
    if (!row[1].empty()) Monitor(row[1]);
    if (!row[2].empty()) root_.TemporaryRoot::Write("/proc/drbd", "version: " + row[2] + "\n");
    for (const std::string_view unit : linux_platform::SplitList(row[5])) Enable(std::string(unit));
    EXPECT_EQ(Ask(), row[3]);
    const bool failed = !row[4].empty();
    if (row[3] == "off" && !failed) continue;
    const bool asked = row[5].empty() && !row[2].starts_with("9");
    EXPECT_EQ(Said().state, !failed ? 1 : asked ? 2 : 3);
    EXPECT_EQ(Said().reason, row[4]);
    Ask();
    EXPECT_EQ(TakeSystemLog().size(), failed ? 1U : 0U) << "a failure is said once";
  }
  Monitor("normal");
  EXPECT_EQ(Ask(), "normal");
  EXPECT_EQ(Said().state, 1);
  char text[7] = "xyz";
  EXPECT_EQ(VELAHAGetOverviewStatusDL(text, 6), -1) << "no room for the NUL";
  EXPECT_STREQ(text, "");
  EXPECT_EQ(VELAHAGetOverviewStatusDL(text, 7), 0);
  EXPECT_STREQ(text, "normal");
}

// As the installed service: neither root nor of the group that Pacemaker answers.
TEST_F(HighAvailabilityTest, WhoMayNotAskTakesTheCollectorsWord) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root, to be somebody else";
  Listen("@pacemakerd");
  Monitor("normal");
  std::filesystem::create_directories(root_.Path() / "var/lib/pacemaker/cib");
  std::filesystem::permissions(root_.Path() / "var/lib/pacemaker/cib",
                               std::filesystem::perms(0700));
  for (const auto& row : ReadTable("cluster-collected", 5)) {
    SCOPED_TRACE(testing::PrintToString(row));
    if (!row[0].empty()) root_.Write("cluster", row[0], std::stoi(row[1]));
    EXPECT_EQ(AsNobody(Ask), row[2]);
    EXPECT_EQ(Said().Name(), row[3]);
    EXPECT_NE(Said().reason.find(row[4]), std::string::npos) << Said().reason;
  }
  root_.Write("cluster", R"("state": "danger")");
  EXPECT_EQ(Ask(), "normal") << "who can ask himself takes nobody's word";
  Monitor("standby");
  const std::string collect =
      VELA_COLLECTOR " --trust-root --once --part cluster --root " + root_.Path().string();
  EXPECT_EQ(std::system(collect.c_str()), 0);
  EXPECT_EQ(AsNobody(Ask), "warning");
}

TEST_F(HighAvailabilityTest, SystemdSaysWhetherPacemakerRuns) {
  PrivateBus bus(root_);
  if (!bus.Runs()) GTEST_SKIP() << "needs dbus-daemon: apt-get install dbus-daemon";
  Monitor("failed");
  Listen("@pacemakerd");
  bus.Say("pacemaker.service", "ActiveState", "activating");
  EXPECT_EQ(Ask(), "off") << "whatever its socket tells";
  Enable("pacemaker.service");
  EXPECT_EQ(Ask(), "off");
  EXPECT_NE(Said().reason.find("not active (activating)"), std::string::npos);
  bus.Say("pacemaker.service", "ActiveState", "active");
  EXPECT_EQ(Ask(), "danger");
  Enable("corosync.service");
  bus.Say("corosync.service", "ActiveState", "failed");
  Ask();
  EXPECT_NE(Said().reason.find("corosync.service is enabled and not active (failed)"),
            std::string::npos);
}

}  // namespace
