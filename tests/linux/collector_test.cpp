// The collector as it is run, over a machine of small files.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <iterator>

#include "platform/linux/base/snapshot.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/collector/snapshot_folder.h"
#include "platform/linux/storage/md.h"
#include "platform/linux/storage/seen_storage.h"
#include "tests/linux/hung_mount.h"
#include "tests/linux/machine_tree.h"
#include "tests/linux/table.h"

namespace {

using namespace linux_platform;

class CollectorTest : public testing::Test {
 protected:
  CollectorTest() {
    root.Write("/proc/sys/kernel/random/boot_id", "this-boot\n");
    root.Mounts("");
    std::filesystem::create_directory(root.Path() / "run");
  }

  // What the program says, on both channels.
  std::string Run(const std::string& arguments, int expected = 0) {
    const std::string command =
        VELA_COLLECTOR " --root " + root.Path().string() + trust + arguments;
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
    trust = " --trust-root ";
    root.Write("/dev/ipmi0", "");
    std::filesystem::permissions(root.Write("/usr/sbin/ipmi-sensors", "#!/bin/sh\n" + script),
                                 std::filesystem::perms::all);
  }

  MachineTree root;
  std::string reason, trust = " ";
};

TEST_F(CollectorTest, ASourceThatIsNotThereLeavesNoSnapshotAndNoWord) {
  BmcWhoseToolRuns("exit 1");
  std::filesystem::remove(root.Path() / "dev/ipmi0");
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
  const std::filesystem::path folder = root.Path() / "run/vela-platform";
  EXPECT_EQ(status(folder).permissions(), std::filesystem::perms{0755});
  EXPECT_EQ(status(folder / "ipmi.json").permissions(), std::filesystem::perms{0644});
  std::filesystem::remove(folder / "ipmi.json");
  std::filesystem::create_directories(folder / "ipmi.json/in-its-place");
  EXPECT_NE(Run("--once", 1).find("/ipmi.json could not be written: "), std::string::npos);
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
  BmcWhoseToolRuns("cat /dev/zero");
  Run("--once");
  Snapshot("ipmi", SnapshotState::Failed);
  EXPECT_EQ(reason, "ipmi: ipmi-sensors printed more than 1 MiB");
  EXPECT_EQ(ReadLastSnapshot("ipmi")["fans"][0]["name"], "FAN1") << "the last that was known";
  root.Write("/proc/sys/kernel/random/boot_id", "next-boot\n");
  EXPECT_TRUE(ReadLastSnapshot("ipmi").isNull());
}

TEST_F(CollectorTest, OneAtATimeAltogetherAndForEachPart) {
  ASSERT_TRUE(MakeSnapshotFolder());
  BmcWhoseToolRuns("true");
  auto taken = TakeLock("ipmi");
  ASSERT_TRUE(taken);
  EXPECT_FALSE(TakeLock("ipmi"));
  Run("--once");
  Snapshot("ipmi", SnapshotState::Failed);
  EXPECT_EQ(reason, "ipmi: an earlier look at it is still stuck in the kernel");
  taken.reset();
  Run("--once");
  Snapshot("ipmi");
  taken = TakeLock("collect");
  EXPECT_EQ(Run("--once"), "vela-platform-collect: another one is at work; nothing was done.\n");
  taken.reset();
}

TEST_F(CollectorTest, InATreeThatSomebodyElseMadeNothingIsFollowedRunOrAwaited) {
  if (geteuid() != 0) GTEST_SKIP() << "it may run programs that are its user's own";
  for (const auto& row : ReadTable("hostile-trees", 3)) {
    SCOPED_TRACE(row[0]);
    MachineTree tree("a-tree-to-plant-in");
    const TemporaryRoot outside;
    const std::string script =
        "T=" + tree.Path().string() + " O=" + outside.Path().string() + R"(
look() { find $O -printf '%P %m %s %l ' -type f -exec cat {} ';'; }
echo "touch $O/ran" >>$T/usr/sbin/ipmi-sensors; echo kept >$O/keep; )" +
        row[2] + "; before=$(look)\ntimeout 60 " VELA_COLLECTOR " --once --root $T 2>/dev/null\n" +
        "test $? = " + row[1] + " && test \"$before\" = \"$(look)\"";
    EXPECT_EQ(system(script.c_str()), 0);
  }
}

TEST_F(CollectorTest, WrongArgumentsGetTheRightOnes) {
  const std::string usage =
      "Usage: vela-platform-collect [--once] [--part NAME]... [--root DIR]\n"
      "       vela-platform-collect --print NAME [--root DIR]\n";
  for (const auto& row : ReadTable("collector-arguments", 2))
    EXPECT_EQ(Run(row[0], 64), "vela-platform-collect: " + row[1] + "\n" + usage);
  const std::string help = Run("--help");
  EXPECT_NE(help.find(usage), std::string::npos);
  EXPECT_NE(help.find("\n  md             arrays"), std::string::npos);
  EXPECT_EQ(Run("-h"), help);
  EXPECT_TRUE(Run("--version").starts_with("vela-platform-collect 0."));
  EXPECT_FALSE(std::filesystem::exists(root.Path() / "run/vela-platform")) << "nothing was done";
  root.Write("/run/vela-platform", "a file in the folder's place");
  EXPECT_NE(Run("--once", 1).find("cannot be written"), std::string::npos);
}

TEST_F(CollectorTest, WithoutOnceItGoesRoundUntilItIsEnded) {
  const std::string command = "timeout 1 " VELA_COLLECTOR " --root " + root.Path().string();
  EXPECT_EQ(WEXITSTATUS(system(command.c_str())), 124) << "it waits for the next round";
}

TEST_F(CollectorTest, ASupplyThatWasThereIsGoneUntilItsOwnerForgetsIt) {
  const auto look = [this](const std::string& second) {
    BmcWhoseToolRuns("echo \"1,PS1,Power Supply,Nominal,N/A,N/A,'Presence detected'\"; echo \"" +
                     ("2,PS2,Power Supply,Nominal,N/A,N/A," + second) +
                     "\"; echo \"3,PS3,Power Supply,N/A,N/A,N/A,N/A\"");
    EXPECT_EQ(Run("--once"), "");
    const Json::Value supplies = Snapshot("ipmi")["supplies"];
    EXPECT_EQ(supplies[2]["state"], "absent") << "never plugged in";
    return supplies[1]["state"].asString();
  };
  root.Write("/var/lib/none", "");
  const std::string there = "'Presence detected'", away = "N/A";
  EXPECT_EQ(look(away), "absent");
  for (int i = 0; i < 2; ++i) EXPECT_EQ(look(there), "ok");
  EXPECT_EQ(look(away), "absent") << "a busy controller leaves one out now and then";
  for (int i = 0; i < 2; ++i) EXPECT_EQ(look(away), "gone");
  std::filesystem::remove_all(root.Path() / "run/vela-platform");
  EXPECT_EQ(look(away), "gone") << "after a restart, too";
  EXPECT_EQ(look(there), "ok");
  for (int i = 0; i < 2; ++i) look(away);
  ASSERT_TRUE(std::filesystem::remove(root.Path() / "var/lib/vela-platform/plugged.json"));
  for (int i = 0; i < 2; ++i) EXPECT_EQ(look(away), "absent");
}

TEST_F(CollectorTest, WhatCannotBeAskedKeepsItsPlaceAndItsReason) {
  root.Load("slow-sources-in-trouble");
  for (const auto& row : ReadTable("collector-parts", 2)) EXPECT_EQ(Run(row[0]), row[1] + "\n");
  EXPECT_FALSE(std::filesystem::exists(root.Path() / "run/vela-platform")) << "only printed";
  Run("--once");
  const Json::Value document = Snapshot("fuseblk");
  ASSERT_EQ(document["mounts"].size(), 1U);
  EXPECT_EQ(document["mounts"][0]["path"], "/");
  EXPECT_EQ(document["mounts"][0]["device"], "0:45");
  EXPECT_GT(document["mounts"][0]["total"].asUInt64(), document["mounts"][0]["free"].asUInt64());
  EXPECT_EQ(document["trouble"], "/nowhere: No such file or directory");
  root.Mounts("30 1 0:45 / /no\x1B[2Jwhere rw - fuseblk /dev/sdb1 rw\n");
  EXPECT_EQ(Run("--once --part fuseblk"),
            "vela-platform-collect: fuseblk: /no\uFFFD[2Jwhere: No such file or directory\n");
  const auto stuck = TakeLock("ses-0:0:1:0");
  Run("--once --part ses");
  EXPECT_EQ(Snapshot("ses")["enclosures"][0]["unread"],
            "an earlier look at it is still stuck in the kernel");
}

TEST_F(CollectorTest, HowManyMembersAnArrayIsMeantToHaveIsWhatItOnceHad) {
  root.Load("array-made-with-one-missing");
  const auto meant = [this] {
    Run("--once --part md");
    return Snapshot("md")["makings"]["md0"]["meant"].asInt();
  };
  EXPECT_EQ(meant(), 0) << "nobody saw it when it was made";
  root.Write("/sys/block/md0/md/degraded", "0");
  EXPECT_EQ(meant(), 1);
  root.Write("/sys/block/md0/md/degraded", "1");
  EXPECT_EQ(meant(), 1) << "grown ahead of its disks";
}

TEST_F(CollectorTest, AFormerMemberSaysThatItBelongsToTheArrayWhichItDoesNotServe) {
  root.Load("mirror-lost-member");
  const auto carries = [this](const char* number, const std::string& type, const char* uuid) {
    root.Write(std::string("/run/udev/data/") + number,
               "E:ID_FS_UUID=" + std::string(uuid) + "\nE:ID_FS_TYPE=" + type + "\n");
    return HasFormerMember(ReadMdArray("md0"));
  };
  EXPECT_FALSE(carries("b8:17", "linux_raid_member", "this")) << "whose array is this?";
  EXPECT_TRUE(carries("b8:1", "linux_raid_member", "this"));
  EXPECT_FALSE(carries("b8:17", "linux_raid_member", "another"));
  EXPECT_FALSE(carries("b8:17", "ext4", "this"));
}

TEST_F(CollectorTest, WhatALineOfFstabWasIsRememberedWhenItIsGone) {
  root.Load("storage-that-is-configured");
  root.Write("/etc/fstab",
             "UUID=inside /a ext4\nUUID=stick /b ext4\nUUID=was-inside /c ext4\nUUID=no /d ext4\n");
  const auto remembered = [this] {
    EXPECT_EQ(Run("--once --part seen"), "");
    std::ifstream file(root.Path() / "var/lib/vela-platform/seen.json");
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  root.AddLine("disk sde pci0/ata9/host1/target1:0:0/1:0:0:0 8:64 1");
  root.AddLine("/etc/velainfo.conf = esata.ports=\"9\"");
  root.Mounts(
      "1 0 8:18 / /by-hand rw - ext4 /dev/sdb2 rw\n2 0 8:33 / /stick rw - ext4 /dev/sdc1 rw\n"
      "3 0 8:65 / /esata rw - ext4 /dev/sde1 rw\n4 0 8:99 / /gone rw - ext4 /dev/sdx1 rw\n");
  const std::string all =
      R"({"sources":{"/by-hand":"inside","/esata":"outside","/stick":"outside",)"
      R"("UUID=inside":"inside","UUID=stick":"outside","UUID=was-inside":"inside"}})";
  EXPECT_EQ(remembered(), all + "\n");
  for (const char* gone : {"inside", "stick"})
    std::filesystem::remove(root.Path() / "dev/disk/by-uuid" / gone);
  std::filesystem::remove_all(root.Path() / "run/vela-platform");
  EXPECT_EQ(remembered(), all + "\n");
  Snapshot("seen", SnapshotState::Absent);
  root.Write("/etc/fstab", "");
  root.Mounts("");
  EXPECT_EQ(remembered(), "") << "no line names it, and nothing is mounted, any more";
}

TEST_F(CollectorTest, DaysWithoutAScrubAreCountedWhereATimerOughtToScrub) {
  root.Load("to-be-scrubbed");
  for (const auto& row : ReadTable("collector-scrubs", 2)) {
    root.AddLine(row[0]);
    EXPECT_EQ(Run("--once --part seen"), "");
    std::string said;
    for (const auto& [name, scrub] : ReadSeenStorage().scrubs)
      said += name + " " + std::to_string(scrub.days);
    EXPECT_EQ(said, row[1]) << row[0];
  }
}

TEST_F(CollectorTest, AMountThatHangsCostsNoOtherAndIsAskedByOneProcessOnly) {
  const std::string hung = root.Path() / "hung", healthy = root.Path() / "healthy";
  for (const auto& folder : {hung, healthy}) std::filesystem::create_directory(folder);
  HungMount mount(hung);
  if (!mount.IsThere()) GTEST_SKIP() << "needs root and /dev/fuse";
  root.Mounts("30 1 0:45 / " + hung + " rw - fuseblk /dev/sdb1 rw\n" + "31 1 0:46 / " + healthy +
              " rw - fuseblk /dev/sdc1 rw\n");
  Run("--once --part fuseblk");
  const Json::Value document = Snapshot("fuseblk");
  EXPECT_EQ(document["trouble"], hung + ": no answer within 4 s");
  ASSERT_EQ(document["mounts"].size(), 1U);
  EXPECT_EQ(document["mounts"][0]["path"], healthy);
  Run("--once --part fuseblk");
  EXPECT_EQ(Snapshot("fuseblk")["trouble"],
            hung + ": an earlier look at it is still stuck in the kernel");
}

}  // namespace
