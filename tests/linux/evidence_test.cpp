// Why the storage is not well: figures and marks of volumes, names in commands, and what a machine
// that is well pays for it. The causes of whole machines are in their "expected".
#include <gtest/gtest.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/linux/contract/request.h"
#include "platform/linux/evidence/cause.h"
#include "platform/linux/evidence/evidence.h"
#include "tests/linux/machine_tree.h"

using namespace linux_platform;

namespace {

InternalVolume MakeVolume(std::string path, std::uint64_t size, std::uint64_t free) {
  InternalVolume volume;
  volume.path = std::move(path);
  volume.number = 1;
  volume.status = "normal";
  volume.warningLevel = 0.05F;
  volume.capacity = {size, free, free, 1000, 1000};
  return volume;
}

// "volume_low 4 of 5: du ...", a line a cause.
std::string TellVolume(InternalVolume volume) {
  StorageView view;
  view.mounts = std::make_shared<Mounts>(std::vector<Mount>());
  view.volumes.push_back(std::move(volume));
  std::string told;
  const Settings settings("disk_inode_warning_percent=0.1");
  TellVolumeEvidence(view, settings, [&told](const VELAEvidence& record) {
    told += std::string(record.key) + " " + std::to_string(record.figure) + " of " +
            std::to_string(record.mark) + ": " + record.show + "\n";
  });
  return told;
}

TEST(VolumeEvidence, NamesTheFreeShareAndItsMark) {
  EXPECT_EQ(TellVolume(MakeVolume("/volume1", 10000, 499)),
            "volume_low 4 of 5: du -xh --max-depth=2 /volume1 | sort -h | tail\n");
  EXPECT_EQ(TellVolume(MakeVolume("/volume1", 10000, 501)), "");
  EXPECT_EQ(TellVolume(MakeVolume("/volume1", 0, 0)), "") << "an unknown capacity is not low";
  InternalVolume volume = MakeVolume("/volume1", 10000, 9000);
  volume.capacity.freeFiles = 99;
  EXPECT_EQ(TellVolume(volume),
            "inodes_low 9 of 10: du -x --inodes --max-depth=2 /volume1 | sort -n | tail\n");
  volume.status = "degraded";
  EXPECT_EQ(TellVolume(volume), "") << "the check leaves it to the storage overview";
}

TEST(VolumeEvidence, TypesNamesAsTheShellTakesThem) {
  const auto showing = [](const std::string& path) {
    const std::string told = TellVolume(MakeVolume(path, 100, 1));
    return told.substr(told.find(':'));
  };
  EXPECT_EQ(showing("/it's a $HOME"),
            ": du -xh --max-depth=2 '/it'\\''s a $HOME' | sort -h | tail\n");
  EXPECT_EQ(showing("/two\nlines"), ": \n") << "it could not be typed as shown";
  EXPECT_EQ(showing("/" + std::string(150, 'a')), ": \n") << "half a command is worse than none";
}

TEST(Cause, IsMendedByAllOfItsCommandsOrByNone) {
  VELAEvidence record;
  SetMend(record, {WriteCommand("umount {}", {"/a\nb"}), "e2fsck -f /dev/sda"});
  EXPECT_STREQ(record.mend[0], "");
  EXPECT_STREQ(record.mend[1], "") << "what came before it cannot be typed";
  SetMend(record, {WriteCommand("umount {}", {"/a b"}), "e2fsck -f /dev/sda"});
  EXPECT_STREQ(record.mend[0], "umount '/a b'");
  EXPECT_STREQ(record.mend[1], "e2fsck -f /dev/sda");
}

TEST(StorageEvidence, AsksNothingOfAMachineThatIsWell) {
  GTEST_FLAG_SET(death_test_style, "fast");
  const MachineTree machine("eight-bays");
  const RequestScope request;
  const StorageView& view = request->GetStorage();
  const Settings& settings = request->GetCurrentSettings().settings;
  ASSERT_EQ(view.overview, Health::Normal);
  ASSERT_GT(view.disks.size(), 0U);
  const TakeEvidence take = [](const VELAEvidence&) { syscall(SYS_exit, 1); };
  const auto tell = [&] {
    prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT);  // any call but exit now kills
    TellStorageEvidence(view, take);
    TellDiskEvidence(view, take);
    TellVolumeEvidence(view, settings, take);
    TellExternalEvidence(view, settings, take);
    syscall(SYS_exit, 0);
  };
  EXPECT_EXIT(tell(), testing::ExitedWithCode(0), "");
}

// Storage that is not well has a cause, and other has none.
class MachineEvidence : public testing::TestWithParam<std::string> {};

TEST_P(MachineEvidence, NamesACauseForEachFinding) {
  const std::string told = MachineTree::Read(GetParam(), "expected");
  const auto has = [&told](const char* form) { return std::regex_search(told, std::regex(form)); };
  EXPECT_EQ(has("\nstorage: (abnormal|danger)"), has("evidence: \\S+ for storage overview: "));
  EXPECT_EQ(has("system volume: crashed"), has("evidence: (file|volume)\\S+ for system status: "));
  EXPECT_EQ(has(": system_crashed|used by .*, disconnected"), has("for disks: "));
}

INSTANTIATE_TEST_SUITE_P(All, MachineEvidence,
                         testing::ValuesIn(MachineTree::ListThoseWith("expected")),
                         MachineTree::GetTestName);

}  // namespace
