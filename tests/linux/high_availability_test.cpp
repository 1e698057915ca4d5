#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/linux/base/deadline.h"
#include "platform/status/source_status.h"
#include "tests/linux/machine_snapshot.h"
#include "tests/linux/private_bus.h"
#include "tests/linux/system_log.h"
#include "tests/linux/timeout_factor.h"
#include "velac.h"

namespace {

using linux_platform::CircuitBreaker;

constexpr const char* kDrbdAlone =
    "version: 8.4.11 (api:1/proto:86-101)\n\n 0: cs:StandAlone ro:Primary/Unknown "
    "ds:UpToDate/DUnknown C r-----\n";

VELASourceReport Said() {
  VELASourceReport reports[11];
  VELAPlatformSources(reports, 11);
  return reports[9];
}

// What a request makes of both questions; "off" where nothing runs.
std::string Ask() {
  VELAPlatformSourcesReset();
  if (VELAHAIsRunning() == 0) return "off";
  char text[1024] = {};
  VELAHAGetOverviewStatusDL(text, sizeof text);
  return text;
}

class HighAvailabilityTest : public testing::Test {
 protected:
  HighAvailabilityTest() { Forget(); }
  ~HighAvailabilityTest() override { Forget(); }
  // The platform remembers across requests: a machine without a cluster forgets.
  void Forget() {
    std::filesystem::remove_all(root_.Path() / "usr");
    std::filesystem::remove_all(root_.Path() / "proc/net");
    std::filesystem::remove(root_.Path() / "proc/drbd");
    CircuitBreaker::CloseAll();
    Ask();
    TakeSystemLog();
  }
  void Monitor(const std::string& script) {
    std::filesystem::permissions(
        root_.TemporaryRoot::Write("/usr/sbin/crm_mon", "#!/bin/sh\n" + script + "\n"),
        std::filesystem::perms(0755));
  }
  // As /proc/net/unix shows a process that listens there.
  void Listen(const std::string& name) {
    root_.TemporaryRoot::Write("/proc/net/unix",
                               "Num       RefCount Protocol Flags    Type St Inode Path\n"
                               "0000000000000000: 00000002 00000000 00010000 0001 01 12345 " +
                                   name + "\n");
  }
  static std::string Print(const std::string& document) {
    return "test \"$*\" = '-1 --output-as=xml' && cat " FIXTURES "/ha/" + document + ".xml";
  }

  MachineSnapshot root_;
};

TEST_F(HighAvailabilityTest, WhatRunsIsToldAndTheWorseOfBothCounts) {
  const std::string name = "@pacemakerd", nobody = "", none = "";
  const std::string drbdWell =
      "version: 8.4.11\n 0: cs:Connected ro:Primary/Secondary ds:UpToDate/UpToDate C r-----\n";
  const std::string ask = "crm_mon could not ask the cluster: Not connected",
                    nine = "DRBD 9 and later do not tell their state in /proc/drbd";
  const struct {
    std::string socket, monitor, drbd;
    const char* text;
    int state;
    std::string reason;
  } cases[] = {
      {nobody, none, none, "off", 0, "neither Pacemaker nor DRBD runs here"},
      {nobody, Print("failed"), none, "off", 0, "neither Pacemaker nor DRBD runs here"},
      {"@pacemakerd-other", Print("failed"), none, "off", 0,
       "neither Pacemaker nor DRBD runs here"},
      {"@pacemakerd@@@@@@@@", Print("failed"), none, "danger", 1, ""},
      {name, Print("normal"), none, "normal", 1, ""},
      {name, Print("normal"), kDrbdAlone, "danger", 1, ""},
      {name, Print("failed"), drbdWell, "danger", 1, ""},
      {name, Print("standby"), drbdWell, "warning", 1, ""},
      {nobody, none, kDrbdAlone, "danger", 1, ""},
      {nobody, none, drbdWell, "normal", 1, ""},
      {nobody, none, "version: 8.4.11\n", "normal", 1, ""},
      {nobody, none, "version: 9.1.4\n", "", 2, nine},
      {name, Print("normal"), "version: 9.1.4\n", "normal", 1, ""},  // which watches it
      {name, Print("standby"), "version: 9.1.4\n", "warning", 1, ""},
      {name, Print("not-connected") + "; exit 102", none, "", 2, ask},
      {name, Print("not-connected") + "; exit 102", drbdWell, "", 2, ask},
      {name, Print("not-connected") + "; exit 102", kDrbdAlone, "danger", 2, ask},
      {name, "exit 0", none, "", 2, "crm_mon printed something that is no cluster status"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.socket + " " + c.monitor + " " + c.drbd);
    Forget();
    Listen(c.socket);
    if (!c.monitor.empty()) Monitor(c.monitor);
    if (!c.drbd.empty()) root_.TemporaryRoot::Write("/proc/drbd", c.drbd);
    EXPECT_EQ(Ask(), c.text);
    EXPECT_EQ(Said().state, c.state);
    EXPECT_EQ(Said().reason, c.reason);
    Ask();
    EXPECT_EQ(TakeSystemLog().size(), c.state == 2 ? 1U : 0U) << "a failure is said once";
  }
  for (const char* script : {"cat /dev/zero", "kill -9 $$"}) {
    Monitor(script);
    EXPECT_EQ(Ask(), "") << script;
    EXPECT_EQ(Said().state, 2);
  }
  Monitor(Print("normal"));
  EXPECT_EQ(Ask(), "normal");
  EXPECT_EQ(Said().state, 1);
  char text[7] = "xyz";
  EXPECT_EQ(VELAHAGetOverviewStatusDL(text, 6), -1) << "no room for the NUL";
  EXPECT_STREQ(text, "");
  EXPECT_EQ(VELAHAGetOverviewStatusDL(text, 7), 0);
  EXPECT_STREQ(text, "normal");
  Listen("");
  EXPECT_EQ(VELAHAGetOverviewStatusDL(text, 7), -1);
}

// As the installed service: neither root nor of the group that Pacemaker answers.
TEST_F(HighAvailabilityTest, WhoMayNotAskTakesTheCollectorsWord) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root, to be somebody else";
  Listen("@pacemakerd");
  Monitor(Print("normal"));
  std::filesystem::create_directories(root_.Path() / "var/lib/pacemaker/cib");
  std::filesystem::permissions(root_.Path() / "var/lib/pacemaker/cib",
                               std::filesystem::perms(0700));
  std::filesystem::permissions(root_.Path(), std::filesystem::perms(0755));
  const struct {
    const char* seen;
    int age;
    const char *text, *says;
  } cases[] = {
      {"", 0, "", "enable --now vela-platform-collect.timer"},
      {R"("state": "danger")", 0, "danger", "seen by vela-platform-collect "},
      {R"("state": "normal")", 170, "normal", "seen by vela-platform-collect 17"},
      {R"("state": "danger")", 200, "", "enable --now vela-platform-collect.timer"},
      {R"("state": "odd")", 0, "", "no state"},
      {R"("error": "Not connected")", 0, "", "cluster: Not connected"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.seen);
    if (*c.seen != '\0') root_.Write("cluster", c.seen, c.age);
    ASSERT_EQ(setresuid(65534, 65534, 0), 0);
    const std::string text = Ask();
    ASSERT_EQ(setresuid(0, 0, 0), 0);
    EXPECT_EQ(text, c.text);
    EXPECT_NE(std::string(Said().reason).find(c.says), std::string::npos) << Said().reason;
    EXPECT_EQ(Said().state, *c.text != '\0' ? 1 : 2);
  }
  root_.Write("cluster", R"("state": "danger")");
  EXPECT_EQ(Ask(), "normal") << "who can ask himself takes nobody's word";
  const std::string command =
      VELA_COLLECTOR " --once --part cluster --root " + root_.Path().string();
  Monitor(Print("standby"));
  EXPECT_EQ(std::system(command.c_str()), 0);
  ASSERT_EQ(setresuid(65534, 65534, 0), 0);
  EXPECT_EQ(Ask(), "warning");
  ASSERT_EQ(setresuid(0, 0, 0), 0);
}

TEST_F(HighAvailabilityTest, SystemdSaysWhetherPacemakerRuns) {
  PrivateBus bus(root_);
  if (!bus.Runs()) GTEST_SKIP() << "needs dbus-daemon: apt-get install dbus-daemon";
  Monitor(Print("failed"));
  bus.Say("pacemaker.service", "ActiveState", "inactive");
  EXPECT_EQ(Ask(), "off");
  bus.Say("pacemaker.service", "ActiveState", "active");
  EXPECT_EQ(Ask(), "danger");
  const TimeoutFactor few(4);
  bus.StopDaemon();
  Listen("@pacemakerd");
  EXPECT_EQ(Ask(), "danger") << "its socket tells, and the bus is not waited for for ever";
  bus.ContinueDaemon();
}

}  // namespace
