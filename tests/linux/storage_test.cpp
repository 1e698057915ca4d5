#include <gtest/gtest.h>

#include "platform/linux/base/settings.h"
#include "platform/linux/storage/disk_class.h"
#include "platform/linux/storage/filesystem.h"
#include "platform/linux/storage/volume_choice.h"
#include "tests/linux/machine_tree.h"
#include "vela_conf.h"
#include "vela_storage.h"
#include "velac.h"

namespace {

using namespace linux_platform;
using VELA::ZRT::STORAGE_MANAGER::Space;
using VELA::ZRT::STORAGE_MANAGER::StorageUtil;
using SystemVolume = VELA::ZRT::STORAGE_WEBUTILS::Volume;
namespace manager = VELA::ZRT::STORAGE_MANAGER;

constexpr const char* kSata = "pci0000:00/0000:00:1f.2/";

std::string Chosen(const std::string& mountInfo, bool skipRoot = false) {
  const std::vector<Mount> mounts = ParseMountInfo(mountInfo);
  std::string paths;
  const auto choice = ChooseVolumes(mounts, skipRoot, [](const Mount&) { return true; });
  for (const Mount* mount : choice.reachable) paths += mount->target + "|";
  for (const Mount* mount : choice.hidden) paths += "(" + mount->target + ")";
  return paths;
}

TEST(VolumeChoice, OneMountPerDiskFileSystemThatNothingElseOwns) {
  const std::string root = "1 0 8:1 / / rw - ext4 /dev/sda1 rw\n";
  const struct {
    const char* why;
    std::string mountInfo;
    const char* chosen;
  } cases[] = {
      {"the root counts", root, "/|"},
      {"blanks and optional fields",
       root + "2 1 8:2 / /my\\040data rw shared:1 master:2 - xfs /dev/b rw\n", "/|/my data|"},
      {"boot partitions do not", root + "2 1 8:2 / /boot rw - ext4 /dev/sda2 rw\n", "/|"},
      {"read-only by choice", root + "2 1 8:2 / /a ro - ext4 /dev/b ro\n", "/|"},
      {"read-only by force is kept", root + "2 1 8:2 / /a rw - ext4 /dev/b ro\n", "/|/a|"},
      {"loops, squashfs and tmpfs",
       root +
           "2 1 7:0 / /a rw - ext4 /dev/loop0 rw\n3 1 7:1 / /snap/x ro - squashfs /dev/loop1 ro\n"
           "4 1 0:9 / /t rw - tmpfs tmpfs rw\n",
       "/|"},
      {"places of programs",
       root +
           "2 1 8:2 / /run/x rw - ext4 /dev/b rw\n3 1 8:3 / /var/lib/docker/y rw - ext4 /dev/c rw\n"
           "4 1 8:4 / /runner rw - ext4 /dev/d rw\n",
       "/|/runner|"},
      {"a bind mount",
       root + "2 1 8:2 /sub /a rw - ext4 /dev/b rw\n3 1 8:2 / /longer rw - ext4 /dev/b rw\n",
       "/|/longer|"},
      {"btrfs subvolumes have numbers of their own",
       "1 0 0:30 /@ / rw - btrfs /dev/sda1 rw,subvol=/@\n2 1 0:31 /@home /home rw - btrfs "
       "/dev/sda1 rw\n",
       "/|"},
      {"datasets of one pool",
       root + "2 1 0:40 / /tank rw - zfs tank rw\n3 1 0:41 / /tank/a rw - zfs tank/a rw\n",
       "/|/tank|"},
      {"behind NFS, FUSE and automounts",
       root + "2 1 0:50 / /n rw - nfs4 s:/x rw\n3 2 8:2 / /n/a rw - ext4 /dev/b rw\n"
              "4 1 0:51 / /f rw - fuse.sshfs s:/x rw\n5 4 8:3 / /f/a rw - ext4 /dev/c rw\n"
              "6 1 0:52 / /auto rw - autofs systemd-1 rw\n7 6 8:4 / /auto/a rw - ext4 /dev/d rw\n"
              "8 4 8:5 /etc/hosts /f/hosts rw - ext4 /dev/e rw\n",
       "/|(/n/a)(/f/a)(/auto/a)"},
      {"the reachable one of two",
       root + "2 1 0:50 / /n rw - nfs s:/x rw\n3 2 8:2 / /n/a rw - ext4 /dev/b rw\n"
              "4 1 8:2 / /longer/way rw - ext4 /dev/b rw\n",
       "/|/longer/way|"},
      {"hidden by a later mount",
       root + "2 1 8:2 / /a rw - ext4 /dev/b rw\n3 2 8:3 / /a rw - ext4 /dev/c rw\n", "/|/a|"},
      {"a torn table",
       "5 5 8:1 / / rw - ext4 /dev/sda1 rw\nrubbish\n6 7 8:2 / /a rw - ext4 b rw\n"
       "7 6 0:2 / /b rw - tmpfs t rw\n",
       "/|/a|"},
      {"none at all", "", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(Chosen(c.mountInfo), c.chosen);
  }
  EXPECT_EQ(Chosen(root, true), "");
  const std::string tooLong(716, 'x');
  EXPECT_EQ(Chosen(root + "2 1 8:2 / /" + tooLong + " rw - ext4 /dev/b rw\n"), "/|");
}

TEST(VolumeChoice, NumbersStayWithTheirVolumes) {
  const Settings settings("volume.id./pinned=7\nvolume.id./odd=none\n");
  const auto number = [&settings](const std::vector<std::string>& paths,
                                  const std::vector<std::string>& fstab) {
    return NumberVolumes(paths, fstab, settings);
  };
  using Numbers = std::vector<int>;
  EXPECT_EQ(number({"/", "/volume1", "/volume3"}, {}), (Numbers{2, 1, 3}));
  EXPECT_EQ(number({"/a", "/b", "/c"}, {"/c", "none", "/b"}), (Numbers{3, 2, 1}));
  EXPECT_EQ(number({"/a", "/pinned", "/volume7"}, {}), (Numbers{1, 7, 2}))
      << "one number, one volume";
  EXPECT_EQ(number({"/odd", "/volumes", "/volume0"}, {}), (Numbers{1, 3, 2}));
}

TEST(VolumeChoice, TheWarningLevelIsAFractionHoweverItIsWritten) {
  const Settings settings("volume.warn./a=0.2\nvolume.warn./b=7\nvolume_warning_percent=\"0.1\"\n");
  EXPECT_FLOAT_EQ(GetWarningLevel(settings, "/a"), 0.2F);
  EXPECT_FLOAT_EQ(GetWarningLevel(settings, "/b"), 0.07F);
  EXPECT_FLOAT_EQ(GetWarningLevel(settings, "/c"), 0.1F);
  for (const char* odd : {"", "x", "-1", "101", "nan"}) {
    SCOPED_TRACE(odd);
    EXPECT_FLOAT_EQ(GetWarningLevel(Settings("volume_warning_percent=" + std::string(odd)), "/"),
                    0.05F);
  }
}

TEST(CrashSigns, AForcedReadOnlyStateIsACrashAndAChosenOneIsNot) {
  const struct {
    const char *why, *line;
    bool crashed;
  } cases[] = {
      {"healthy", "1 0 8:1 / / rw - ext4 /dev/a rw,errors=remount-ro", false},
      {"remounted by the admin", "1 0 8:1 / / ro - ext4 /dev/a ro", false},
      {"lost its writing", "1 0 8:1 / / rw - ext4 /dev/a ro", true},
      {"a btrfs subvolume", "1 0 0:30 /@ / rw - btrfs /dev/a ro,subvol=/@", true},
      {"a bind mount", "1 0 8:1 /x / rw - ext4 /dev/a ro", false},
      {"a live medium", "1 0 7:0 / / rw - squashfs /dev/loop0 ro", false},
      {"the kernel says so", "1 0 8:1 / / rw - ext4 /dev/a rw,emergency_ro", true},
      {"shut down", "1 0 8:1 / / rw - ext4 /dev/a rw,shutdown", true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(FindCrashSigns(ParseMountInfo(c.line).at(0)).Any(), c.crashed);
  }
  const Mount stops = ParseMountInfo("1 0 8:1 / / rw - ext4 /dev/a rw,errors=remount-ro").at(0);
  const Mount goesOn = ParseMountInfo("1 0 8:1 / / rw - ext4 /dev/a rw").at(0);
  EXPECT_TRUE(ErrorsStoppedIt(stops, {2, 1000}, 1000));
  EXPECT_FALSE(ErrorsStoppedIt(stops, {2, 999}, 1000)) << "before this boot";
  EXPECT_FALSE(ErrorsStoppedIt(stops, {0, 1000}, 1000));
  EXPECT_FALSE(ErrorsStoppedIt(goesOn, {2, 1000}, 1000));
  EXPECT_EQ(ParseBootTime("cpu 1 2\nbtime 1700000000\nprocesses 3\n"), 1700000000);
}

TEST(FileSystems, BtrfsAndZfsTellOfTheirMembers) {
  MachineTree machine;
  const std::string folder = "/sys/fs/btrfs/u-1/";
  machine.Write(folder + "devices/sda1/size", "");
  machine.Write(folder + "devices/sdb1/size", "");
  machine.Write(folder + "devinfo/1/missing", "0\n");
  machine.Write(folder + "devinfo/1/error_stats", "write_errs 0\nread_errs 0\n");
  EXPECT_EQ(ReadBtrfs("sdb1").health, Health::Normal);
  EXPECT_EQ(ReadBtrfs("sdb1").members, (std::vector<std::string>{"sda1", "sdb1"}));
  EXPECT_EQ(ReadBtrfs("sdc1").members.size(), 0U);
  machine.Write(folder + "devinfo/2/error_stats", "write_errs 0\nread_errs 7\n");
  EXPECT_EQ(ReadBtrfs("sda1").health, Health::Abnormal);
  machine.Write(folder + "devinfo/2/error_stats", "write_errs 0\n");
  machine.Write(folder + "devinfo/2/missing", "1\n");
  EXPECT_EQ(ReadBtrfs("sda1").health, Health::Abnormal);

  const std::pair<const char*, Health> states[] = {
      {"ONLINE", Health::Normal},   {"DEGRADED", Health::Abnormal}, {"OFFLINE", Health::Abnormal},
      {"FAULTED", Health::Danger},  {"UNAVAIL", Health::Danger},    {"REMOVED", Health::Danger},
      {"SUSPENDED", Health::Danger}};
  for (const auto& [state, health] : states) {
    machine.Write("/proc/spl/kstat/zfs/tank/state", std::string(state) + "\n");
    EXPECT_EQ(ReadZpool("tank"), health) << state;
  }
}

// Two disks in a mirror that holds the data, a third for the system.
class MirrorMachine : public testing::Test {
 protected:
  MirrorMachine() {
    machine.Disk("sda", kSata + std::string("ata1/host0/target0:0:0/0:0:0:0"), 8, 0, 1);
    machine.Disk("sdb", kSata + std::string("ata2/host1/target1:0:0/1:0:0:0"), 8, 16, 1);
    machine.Disk("sdc", kSata + std::string("ata3/host2/target2:0:0/2:0:0:0"), 8, 32, 2);
    machine.Mounts(
        "1 0 8:33 / / rw - ext4 /dev/none/sdc1 rw\n"
        "2 1 9:0 / /volume1 rw - ext4 /dev/none/md0 rw\n");
  }
  void Mirror(const char* state, int degraded, const char* second, const char* slot) {
    machine.Array("md0", 0, "raid1", state, 2, degraded,
                  {{"sda1", "in_sync", "0"}, {"sdb1", second, slot}});
  }
  static Json::Value Disks() {
    Json::Value disks(Json::arrayValue);
    EXPECT_TRUE(manager::Disk(false, true).DumpDisks(Space(23), disks));
    return disks;
  }
  static std::string Status(const char* path) {
    const Space space(23);
    for (const auto* record = space.GetAll(); record != nullptr; record = record->next)
      if (std::string(record->path) == path) return manager::Volume::ToJsonSpaceStatus(*record);
    return "no such volume";
  }
  MachineTree machine;
};

TEST_F(MirrorMachine, AHealthyOneIsNormalThroughout) {
  Mirror("clean", 0, "in_sync", "1");
  EXPECT_EQ(Space::GetOverviewStatus(), "normal");
  EXPECT_FALSE(SystemVolume::IsSystemVolCrashed());
  EXPECT_EQ(Status("/volume1"), "normal");
  EXPECT_EQ(StorageUtil::ToUISpaceID(1, "/volume1"), "volume_1");
  EXPECT_EQ(StorageUtil::ToUISpaceID(1, "/"), "volume_2");
  EXPECT_EQ(VLIBCMaxDiskGet(), 3);
  EXPECT_TRUE(VelaConf().DefCheckValue("maxdisks", "3", false));
  const Json::Value disks = Disks();
  ASSERT_EQ(disks.size(), 3U);
  EXPECT_EQ(disks[0]["name"], "Disk 1");
  EXPECT_EQ(disks[0]["used_by"], "md0");
  EXPECT_EQ(disks[0]["status"], "normal");
  EXPECT_EQ(disks[2]["used_by"], "volume_2");
  EXPECT_FALSE(disks[0].isMember("remote_info"));
}

TEST_F(MirrorMachine, AFaultyMemberDegradesTheVolumeAndMarksItsDisk) {
  Mirror("clean", 1, "faulty", "none");
  EXPECT_EQ(Space::GetOverviewStatus(), "abnormal");
  EXPECT_EQ(Status("/volume1"), "degraded");
  EXPECT_EQ(Disks()[1]["status"], "crashed");
  machine.Mounts("1 0 9:0 / / rw - ext4 /dev/none/md0 rw\n");
  EXPECT_EQ(Disks()[1]["status"], "system_crashed") << "the array holds the system";
  EXPECT_FALSE(SystemVolume::IsSystemVolCrashed()) << "the mirror still has one half";
}

TEST_F(MirrorMachine, BeyondRedundancyTheVolumeHasCrashed) {
  Mirror("broken", 1, "faulty", "1");
  EXPECT_EQ(Space::GetOverviewStatus(), "danger");
  EXPECT_EQ(Status("/volume1"), "crashed");
  machine.Mounts("1 0 9:0 / / rw - ext4 /dev/none/md0 rw\n");
  EXPECT_TRUE(SystemVolume::IsSystemVolCrashed());
}

TEST_F(MirrorMachine, ASpareWaitsUntilItRebuilds) {
  machine.Disk("sdd", kSata + std::string("ata4/host3/target3:0:0/3:0:0:0"), 8, 48);
  machine.Array("md0", 0, "raid1", "clean", 1, 0,
                {{"sda1", "in_sync", "0"}, {"sdd", "spare", "none"}});
  EXPECT_EQ(Disks()[3]["used_by"], "hotspare");
  machine.Write("/sys/devices/virtual/block/md0/md/dev-sdd/slot", "1\n");
  EXPECT_EQ(Disks()[3]["used_by"], "md0");
}

TEST_F(MirrorMachine, AFailingDiskReachesTheOverview) {
  Mirror("clean", 0, "in_sync", "1");
  const std::string disk =
      std::string("/sys/devices/") + kSata + "ata1/host0/target0:0:0/0:0:0:0/block/sda/device/";
  machine.Write(disk + "vpd_pg80", std::string("\0\x80\0\x08", 4) + "  SER-1 ");
  machine.Write("/var/lib/vela-platform/smart/SER-1", "Health\n");
  EXPECT_EQ(Space::GetOverviewStatus(), "abnormal");
  EXPECT_EQ(Disks()[0]["status"], "warning");
  EXPECT_EQ(Disks()[0]["overview_status"], "abnormal");
  std::filesystem::remove(machine.Path().string() + "/var/lib/vela-platform/smart/SER-1");
  machine.Write(disk + "state", "offline\n");
  EXPECT_EQ(Disks()[0]["status"], "crashed");
  EXPECT_EQ(Space::GetOverviewStatus(), "abnormal");
}

TEST_F(MirrorMachine, ErrorsThatExt4CountedAreToldAndAVanishedDiskIsACrash) {
  Mirror("clean", 0, "in_sync", "1");
  machine.Write("/sys/fs/ext4/md0/errors_count", "3\n");
  machine.Write("/sys/fs/ext4/md0/last_error_time", "2000\n");
  machine.Write("/proc/stat", "btime 1000\n");
  EXPECT_EQ(Space::GetOverviewStatus(), "abnormal");
  EXPECT_EQ(Status("/volume1"), "normal");
  machine.Mounts("1 0 9:0 / / rw - ext4 /dev/none/md0 rw,errors=remount-ro\n");
  EXPECT_TRUE(SystemVolume::IsSystemVolCrashed());
  machine.Mounts("1 0 8:99 / / rw - ext4 /dev/none/sdx1 rw\n");
  EXPECT_TRUE(SystemVolume::IsSystemVolCrashed());
}

TEST_F(MirrorMachine, ARemoteDiskIsDisconnectedWhenItsSessionFailed) {
  machine.Disk("sdd", "platform/host4/session1/target4:0:0/4:0:0:1", 8, 48);
  machine.Write("/sys/class/iscsi_session/session1/state", "LOGGED_IN\n");
  const auto remote = [] { return Disks()[3]; };
  EXPECT_FALSE(remote().isMember("remote_info"));
  machine.Write("/sys/class/iscsi_session/session1/state", "FAILED\n");
  EXPECT_EQ(remote()["remote_info"]["disconnect"], 1);
}

TEST_F(MirrorMachine, AMappingIsAsTheCollectorSawIt) {
  machine.Mapped("dm-2", 253, 2, {"sda1", "sdb1"});
  machine.Mounts("1 0 253:2 / / rw - ext4 /dev/none/vg0-data rw\n");
  machine.Write("/proc/sys/kernel/random/boot_id", "boot\n");
  const std::pair<const char*, const char*> cases[] = {
      {"normal", "normal"}, {"abnormal", "degraded"}, {"danger", "crashed"}};
  for (const auto& [health, status] : cases) {
    SCOPED_TRACE(health);
    machine.Write("/run/vela-platform/device_mapper.json",
                  "{\"written\": " + std::to_string(time(nullptr)) +
                      ", \"boot_id\": \"boot\", \"period\": 60, \"objects\": "
                      "[{\"device\": \"253:2\", \"health\": \"" +
                      health + "\"}]}");
    EXPECT_EQ(Space::GetOverviewStatus(), health);
    EXPECT_EQ(Status("/"), status);
  }
}

TEST(Storage, TheCapacityIsThatOfTheMountItself) {
  const Space space(23);
  for (const auto* record = space.GetAll(); record != nullptr; record = record->next) {
    _tag_volume_usage usage = {};
    FS_INFO* info = nullptr;
    ASSERT_TRUE(manager::Volume::GetVolumeFSInfo(record->path, usage, info)) << record->path;
    EXPECT_GT(usage.u1, usage.u0);
    EXPECT_GT(usage.u0, 0U);
  }
  MachineTree machine;
  machine.Mounts("1 0 8:99 / /proc rw - ext4 /dev/none rw\n");
  _tag_volume_usage usage = {};
  FS_INFO* info = nullptr;
  EXPECT_FALSE(manager::Volume::GetVolumeFSInfo("/proc", usage, info)) << "another device";
  EXPECT_FALSE(manager::Volume::GetVolumeFSInfo("/no/such", usage, info));
}

}  // namespace
