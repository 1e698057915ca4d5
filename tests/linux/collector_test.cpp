// The collector as it is run, over a machine of small files.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "platform/linux/base/snapshot.h"
#include "platform/linux/collector/snapshot_folder.h"
#include "tests/linux/eventually.h"
#include "tests/linux/hung_mount.h"
#include "tests/linux/temporary_root.h"

namespace {

using namespace linux_platform;

class CollectorTest : public testing::Test {
 protected:
  CollectorTest() {
    root.Write("/proc/sys/kernel/random/boot_id", "this-boot\n");
    root.Write("/proc/self/mountinfo", "");
    std::filesystem::create_directories(root.Path() / "run");
  }

  // What the program says, on both channels.
  std::string Run(const std::string& arguments, int expected = 0) {
    const std::string command = VELA_COLLECTOR " --root " + root.Path().string() + " " + arguments;
    FILE* stream = popen((command + " 2>&1").c_str(), "r");
    std::string text;
    char part[4096];
    while (const std::size_t got = fread(part, 1, sizeof part, stream)) text.append(part, got);
    EXPECT_EQ(WEXITSTATUS(pclose(stream)), expected) << command;
    return text;
  }

  Json::Value Snapshot(const char* source, SnapshotState expected = SnapshotState::Read) {
    Json::Value document;
    reason.clear();
    EXPECT_EQ(ReadSnapshot(source, document, reason), expected) << reason;
    return document;
  }

  void BmcWhoseToolRuns(const std::string& script) {
    root.Write("/dev/ipmi0", "");
    std::filesystem::permissions(root.Write("/usr/sbin/ipmi-sensors", "#!/bin/sh\n" + script),
                                 std::filesystem::perms::all);
  }

  TemporaryRoot root;
  std::string reason;
};

TEST_F(CollectorTest, ASourceThatIsNotThereLeavesNoSnapshotAndNoWord) {
  EXPECT_EQ(Run("--once"), "");
  for (const char* source : {"ses", "ipmi", "fuseblk"}) Snapshot(source, SnapshotState::Absent);
  ASSERT_TRUE(WriteSnapshot("ses", Json::Value(Json::objectValue)));
  Run("--once --part ses");
  Snapshot("ses", SnapshotState::Absent);
}

TEST_F(CollectorTest, WhatTheControllerSaysIsThereForAllToRead) {
  BmcWhoseToolRuns("echo \"9,FAN1,Fan,Critical,0.00,RPM,'At or Below'\"");
  EXPECT_EQ(Run("--once"), "");
  const Json::Value document = Snapshot("ipmi");
  EXPECT_EQ(document["fans"][0]["state"], "failed");
  EXPECT_EQ(document["period"], 60);
  struct stat status = {};
  ASSERT_EQ(stat((root.Path() / "run/vela-platform/ipmi.json").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0644U);
  ASSERT_EQ(stat((root.Path() / "run/vela-platform").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0755U);
}

TEST_F(CollectorTest, AFailureIsTheSnapshotAndIsSaidOnce) {
  BmcWhoseToolRuns("echo 'no BMC' >&2; exit 1");
  const std::string why = "ipmi-sensors failed; run ipmi-sensors --driver-type=OPENIPMI to see why";
  EXPECT_EQ(Run("--once"), "vela-platform-collect: ipmi: " + why + "\n");
  EXPECT_EQ(Run("--once"), "");
  Snapshot("ipmi", SnapshotState::Failed);
  EXPECT_EQ(reason, "ipmi: " + why);
  BmcWhoseToolRuns("echo \"9,FAN1,Fan,Nominal,3000.00,RPM,'OK'\"");
  EXPECT_EQ(Run("--once"), "");
  Snapshot("ipmi");
  BmcWhoseToolRuns("cat /dev/zero");
  Run("--once");
  Snapshot("ipmi", SnapshotState::Failed);
  EXPECT_EQ(reason, "ipmi: ipmi-sensors printed more than 1 MiB");
  EXPECT_EQ(ReadLastSnapshot("ipmi")["fans"][0]["name"], "FAN1") << "the last that was known";
  root.Write("/proc/sys/kernel/random/boot_id", "next-boot\n");
  EXPECT_TRUE(ReadLastSnapshot("ipmi").isNull());
}

TEST_F(CollectorTest, PrintShowsAndWritesNoSnapshot) {
  BmcWhoseToolRuns("echo \"14,Inlet,Temperature,Nominal,24.00,C,'OK'\"");
  EXPECT_EQ(Run("--print ipmi"),
            R"({"fans":[],"supplies":[],"temperatures":[{"name":"Inlet","state":"ok"}]})"
            "\n");
  EXPECT_EQ(Run("--print ses"), "null\n");
  EXPECT_FALSE(std::filesystem::exists(root.Path() / "run/vela-platform"));
}

TEST_F(CollectorTest, OneAtATimeAltogetherAndForEachPart) {
  ASSERT_TRUE(MakeSnapshotFolder());
  BmcWhoseToolRuns("true");
  {
    const auto stuck = TakeLock("ipmi");
    ASSERT_TRUE(stuck);
    EXPECT_FALSE(TakeLock("ipmi"));
    Run("--once");
    Snapshot("ipmi", SnapshotState::Failed);
    EXPECT_EQ(reason, "ipmi: an earlier look at it is still stuck in the kernel");
  }
  Run("--once");
  Snapshot("ipmi");
  {
    const auto atWork = TakeLock("collect");
    EXPECT_EQ(Run("--once"), "vela-platform-collect: another one is at work; nothing was done.\n");
  }
  const std::filesystem::path lock = root.Path() / "run/vela-platform/.ipmi.lock";
  std::filesystem::remove(lock);
  std::filesystem::create_symlink(root.Path() / "elsewhere", lock);
  Run("--once");
  EXPECT_FALSE(std::filesystem::exists(root.Path() / "elsewhere")) << "a lock is no link";
}

TEST_F(CollectorTest, WrongArgumentsGetTheRightOnes) {
  const std::string usage =
      "Usage: vela-platform-collect [--once] [--part NAME]... [--root DIR]\n"
      "       vela-platform-collect --print NAME [--root DIR]\n";
  const std::pair<const char*, const char*> cases[] = {
      {"--part disks", "--part: there is no part \"disks\"; --help lists them"},
      {"--part ses --part disks", "--part: there is no part \"disks\"; --help lists them"},
      {"--print disks", "--print: there is no part \"disks\"; --help lists them"},
      {"--print ses --once", "--once excludes --print"},
      {"--print ses --part ipmi", "--part excludes --print"},
      {"--root /nowhere", "--root: Directory does not exist: /nowhere"},
      {"--once --part", "--part: its value is missing"},
      {"--once=3", "The following argument was not expected: --once=3"},
      {"-hx", "The following argument was not expected: -x"},
      {"--once all", "The following argument was not expected: all"},
  };
  for (const auto& [arguments, error] : cases)
    EXPECT_EQ(Run(arguments, 64), std::string("vela-platform-collect: ") + error + "\n" + usage);
  const std::string help = Run("--help");
  EXPECT_NE(help.find(usage), std::string::npos);
  EXPECT_NE(help.find("  --part NAME    Only this part"), std::string::npos);
  EXPECT_NE(help.find("\n  md             arrays"), std::string::npos);
  EXPECT_EQ(Run("-h"), help);
  EXPECT_TRUE(Run("--version").starts_with("vela-platform-collect 0."));
  EXPECT_FALSE(std::filesystem::exists(root.Path() / "run/vela-platform")) << "nothing was done";
  root.Write("/run/vela-platform", "a file in the folder's place");
  EXPECT_NE(Run("--once", 1).find("cannot be written"), std::string::npos);
}

TEST_F(CollectorTest, ASnapshotThatCannotBeWrittenIsSaid) {
  BmcWhoseToolRuns("true");
  std::filesystem::create_directories(root.Path() / "run/vela-platform/ipmi.json/in-its-place");
  const std::string said = Run("--once", 1);
  EXPECT_NE(said.find("/ipmi.json could not be written: "), std::string::npos) << said;
}

// Until it is ended: a part that has hung in one round is asked in the next.
TEST_F(CollectorTest, WithoutOnceItGoesRoundUntilItIsEnded) {
  BmcWhoseToolRuns("echo \"9,FAN1,Fan,Nominal,3000.00,RPM,'OK'\"");
  const pid_t collector = fork();
  if (collector == 0) {
    execl(VELA_COLLECTOR, VELA_COLLECTOR, "--root", root.Path().c_str(), nullptr);
    _exit(127);
  }
  EXPECT_TRUE(Eventually([this] {
    Json::Value document;
    return ReadSnapshot("ipmi", document, reason) == SnapshotState::Read;
  }));
  EXPECT_EQ(waitpid(collector, nullptr, WNOHANG), 0) << "it waits for the next round";
  kill(collector, SIGTERM);
  int status = 0;
  EXPECT_EQ(waitpid(collector, &status, 0), collector);
  EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

TEST_F(CollectorTest, AnEnclosureThatCannotBeAskedKeepsItsPlace) {
  root.Write("/sys/class/enclosure/0:0:1:0/id", "0x500a0b0c0d0e0f10\n");
  root.Write("/sys/class/enclosure/0:0:1:0/device/model", "JBOD-24         \n");
  root.Write("/sys/class/enclosure/0:0:0:0/id", "0x600a\n");
  root.Write("/sys/class/enclosure/0:0:0:0/device/scsi_generic/sg7/dev", "21:7\n");
  root.Write("/dev/sg7", "no device");
  // The same enclosure on a second path.
  root.Write("/sys/class/enclosure/0:0:0/id", "0x600a\n");
  Run("--once --part ses");
  const Json::Value units = Snapshot("ses")["enclosures"];
  ASSERT_EQ(units.size(), 2U);
  EXPECT_EQ(units[0]["id"], "500a0b0c0d0e0f10");
  EXPECT_EQ(units[0]["product"], "JBOD-24");
  EXPECT_EQ(units[0]["unread"], "the kernel module sg is not loaded");
  EXPECT_NE(units[1]["unread"].asString().find("it did not give page 01h"), std::string::npos);

  const auto stuck = TakeLock("ses-0:0:1:0");
  Run("--once --part ses");
  EXPECT_EQ(Snapshot("ses")["enclosures"][0]["unread"],
            "an earlier look at it is still stuck in the kernel");
}

TEST_F(CollectorTest, AnArrayThatDoesNotTellWhenItWasMadeCountsAsBuilt) {
  root.Write("/proc/stat", "btime 1000\n");
  const std::pair<const char*, const char*> attributes[] = {
      {"level", "raid5"},         {"raid_disks", "2"}, {"degraded", "1"},
      {"dev-a/state", "in_sync"}, {"dev-a/slot", "0"}, {"dev-a/block/size", "1"},
      {"dev-b/state", "spare"},   {"dev-b/slot", "1"}, {"dev-b/block/size", "1"}};
  for (const auto& [attribute, value] : attributes)
    root.Write(std::string("/sys/block/md0/md/") + attribute, std::string(value) + "\n");
  root.Write("/dev/md0", "no device");
  EXPECT_EQ(Run("--once --part md"), "");
  EXPECT_EQ(Snapshot("md")["arrays"]["md0"], "built");
}

TEST_F(CollectorTest, TheRoomOnAProgramsFileSystemIsTold) {
  const std::string folder = root.Path() / "stick";
  std::filesystem::create_directory(folder);
  root.Write("/proc/self/mountinfo", "30 1 0:45 / " + folder + " rw - fuseblk /dev/sdb1 rw\n" +
                                         "31 1 0:46 / /nowhere rw - fuseblk /dev/sdc1 rw\n" +
                                         "32 1 0:47 / / rw - fuse.sshfs host rw\n");
  Run("--once --part fuseblk");
  const Json::Value document = Snapshot("fuseblk");
  ASSERT_EQ(document["mounts"].size(), 1U);
  EXPECT_EQ(document["mounts"][0]["path"], folder);
  EXPECT_EQ(document["mounts"][0]["device"], "0:45");
  EXPECT_GT(document["mounts"][0]["total"].asUInt64(), document["mounts"][0]["free"].asUInt64());
  EXPECT_EQ(document["trouble"], "/nowhere: No such file or directory");
}

TEST_F(CollectorTest, AMountThatHangsCostsNoOtherAndIsAskedByOneProcessOnly) {
  const std::string hung = root.Path() / "hung", healthy = root.Path() / "healthy";
  std::filesystem::create_directory(hung);
  std::filesystem::create_directory(healthy);
  HungMount mount(hung);
  if (!mount.IsThere()) GTEST_SKIP() << "needs root and /dev/fuse";
  root.Write("/proc/self/mountinfo", "30 1 0:45 / " + hung + " rw - fuseblk /dev/sdb1 rw\n" +
                                         "31 1 0:46 / " + healthy + " rw - fuseblk /dev/sdc1 rw\n");
  Run("--once --part fuseblk");
  Json::Value document = Snapshot("fuseblk");
  EXPECT_EQ(document["trouble"], hung + ": no answer within 4 s");
  ASSERT_EQ(document["mounts"].size(), 1U);
  EXPECT_EQ(document["mounts"][0]["path"], healthy);

  Run("--once --part fuseblk");
  document = Snapshot("fuseblk");
  EXPECT_EQ(document["trouble"], hung + ": an earlier look at it is still stuck in the kernel");
}

}  // namespace
