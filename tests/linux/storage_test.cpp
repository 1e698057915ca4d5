// What only a real file system shows. All else is in the machines of tests/fixtures/linux/machines.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/statvfs.h>

#include "platform/linux/contract/request.h"
#include "platform/linux/storage/mapping_snapshot.h"
#include "tests/linux/machine_snapshot.h"
#include "tests/linux/machine_tree.h"
#include "tests/linux/source_statuses.h"
#include "tests/linux/table.h"
#include "vela_storage.h"
#include "velac.h"

namespace {

using namespace VELA::ZRT::STORAGE_MANAGER;

bool Shell(const std::string& commands) {
  return system(("PATH=$PATH:/sbin:/usr/sbin; set -e; { " + commands + "; } >/dev/null 2>&1")
                    .c_str()) == 0;
}

// A file system in a file.
class LoopVolume {
 public:
  LoopVolume(const std::string& make, const std::string& size) {
    const std::string image = folder_.Write("/image", "").string();
    std::filesystem::create_directory(folder_.Path() / "mounted");
    mounted_ = Shell("truncate -s " + size + " " + image + "; mkfs." + make + " " + image +
                     "; mount -o loop " + image + " " + Target());
  }
  ~LoopVolume() { system(("umount -l " + Target() + " 2>/dev/null").c_str()); }
  LoopVolume(const LoopVolume&) = delete;
  LoopVolume& operator=(const LoopVolume&) = delete;

  bool Mounted() const { return mounted_; }
  std::string Target() const { return (folder_.Path() / "mounted").string(); }

 private:
  TemporaryRoot folder_;
  bool mounted_ = false;
};

// As if the volume lay on that disk: an anonymous device number is not held against the real one.
std::string MountedFrom(const char* disk, const LoopVolume& volume) {
  return "1 0 0:70 / " + volume.Target() + " rw - btrfs /dev/none/" + disk + " rw\n";
}

TEST(Storage, CapacitiesAreThoseOfTheMountWithoutRootsReserve) {
  const LoopVolume volume("ext4 -q -m 20", "16M");
  if (!volume.Mounted()) GTEST_SKIP() << "needs root, loop devices and e2fsprogs";
  ASSERT_TRUE(Shell("head -c 100000 /dev/zero > " + volume.Target() + "/file; sync"));
  struct statvfs real = {};
  ASSERT_EQ(statvfs(volume.Target().c_str(), &real), 0);
  ASSERT_LT(real.f_bavail, real.f_bfree);
  MachineTree machine;
  machine.Disk("sda", "pci0/ata1/host0/target0:0:0/0:0:0:0", 8, 0);
  machine.Disk("sdb", "pci0/usb1/1-2/1-2:1.0/host6/target6:0:0/6:0:0:0", 8, 16);

  _tag_volume_usage usage = {};
  FS_INFO* info = nullptr;
  machine.Mounts(MountedFrom("sda", volume));
  ASSERT_TRUE(Volume::GetVolumeFSInfo(volume.Target().c_str(), usage, info));
  EXPECT_EQ(usage.u0, (real.f_blocks - real.f_bfree) * real.f_frsize);
  EXPECT_EQ(usage.u1, usage.u0 + real.f_bavail * real.f_frsize);
  EXPECT_EQ(usage.u2, real.f_files);
  EXPECT_EQ(usage.u3, real.f_ffree);
  EXPECT_EQ(VELAMountVolAllEnum(0, 4, 0), nullptr);

  machine.Mounts(MountedFrom("sdb", volume));
  EXPECT_FALSE(Volume::GetVolumeFSInfo(volume.Target().c_str(), usage, info));
  EXPECT_EQ(VELAMountVolAllEnum(0, 8, 0), nullptr) << "no eSATA volume";
  VELA_MOUNT_VOL_INFO* list = VELAMountVolAllEnum(0, 4, 0);
  ASSERT_NE(list, nullptr);
  EXPECT_STREQ(list->name, "usbshare1");
  EXPECT_EQ(list->totalSize, real.f_blocks * real.f_frsize);
  EXPECT_EQ(list->freeSize, real.f_bavail * real.f_frsize);
  VELAMountVolInfoFree(list);
}

TEST(Storage, AnXfsThatShutDownHasCrashed) {
  const LoopVolume volume("xfs -q", "400M");
  if (!volume.Mounted()) GTEST_SKIP() << "needs root, loop devices and xfsprogs";
  MachineTree machine;
  machine.Disk("sda", "pci0/ata1/host0/target0:0:0/0:0:0:0", 8, 0);
  machine.Mounts(MountedFrom("sda", volume));
  const auto status = [] { return Volume::ToJsonSpaceStatus(*Space(23).GetAll()); };
  EXPECT_EQ(status(), "normal");
  ASSERT_TRUE(Shell("xfs_io -x -c shutdown " + volume.Target()));
  EXPECT_EQ(status(), "crashed");
}

TEST(Storage, AVolumeThatIsNotThereOrIsAnotherHasNoCapacity) {
  MachineTree machine;
  machine.Disk("sda", "pci0/ata1/host0/target0:0:0/0:0:0:0", 8, 0);
  machine.Mounts("1 0 8:0 / /proc rw - ext4 /dev/none/sda rw\n");
  VELAPlatformSourcesReset();
  _tag_volume_usage usage = {};
  FS_INFO* info = nullptr;
  EXPECT_FALSE(Volume::GetVolumeFSInfo("/proc", usage, info));
  EXPECT_EQ(SourceReports()["volumes"].reason,
            "the capacity of /proc could not be read: No such device");
  EXPECT_FALSE(Volume::GetVolumeFSInfo("/no/such", usage, info));
  EXPECT_EQ(StorageUtil::ToUISpaceID(1, "/no/such"), "");
  EXPECT_EQ(VELAVolumeCapWarnPctGet("/no/such"), 0.05F);
}

TEST(Storage, ABoardWithoutAClockTakesNoErrorOfAnEarlierBootForOneOfNow) {
  const MachineTree machine("ext4-that-stops-by-itself");
  const auto isCrashed = [] { return Space::GetOverviewStatus() == "danger"; };
  EXPECT_TRUE(isCrashed());
  ASSERT_TRUE(Shell("touch -d @1000 " + (machine.Path() / "dev/null").string()));
  EXPECT_FALSE(isCrashed());
}

TEST(Storage, WhatCannotBeReadIsSaid) {
  MachineTree machine;
  std::filesystem::create_directories(machine.Path() / "proc/self/mountinfo");
  VELAPlatformSourcesReset();
  EXPECT_EQ(Space(23).GetAll(), nullptr);
  EXPECT_EQ(SourceReports()["volumes"].reason, "the mount table could not be read: Is a directory");
  EXPECT_EQ(VLIBCMaxDiskGet(), 0);
  EXPECT_EQ(SourceReports()["disks"].reason, "/sys/block lists no disks");
}

TEST(Storage, ATableThatMayNotBeReadIsSaid) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root, to be somebody else";
  for (const std::string path : {"/etc/fstab", "/etc/mdadm/mdadm.conf", "/etc/mdadm/mdadm.conf.d",
                                 "/etc/mdadm/mdadm.conf.d/a.conf", "/etc/zfs/zpool.cache"}) {
    const MachineTree machine;
    permissions(machine.Path(), std::filesystem::perms(0755));
    machine.Write(path.ends_with(".d") ? path + "/a.conf" : path, "ARRAY /dev/md7\n");
    permissions(machine.Path().string() + path, std::filesystem::perms(0));
    const auto ask = [] {
      VELAPlatformSourcesReset();
      Space::GetOverviewStatus();
      return SourceReports()["disks"];
    };
    EXPECT_EQ(AsNobody(ask).state, 3);
    EXPECT_EQ(SourceReports()["disks"].reason, "nobody looks for what " + path +
                                                   " names, which could not be read: Permission "
                                                   "denied");
  }
}

// Each line as a table of its own; bytes in it are escaped as in a machine's tree.
TEST(Storage, WhatTablesNameAndIsNotThereIsToldByNameAndIsAsBadAsItsLine) {
  for (const auto& row : ReadTable("expected-storage", 4)) {
    SCOPED_TRACE(row[1]);
    const MachineTree machine("storage-that-is-configured");
    machine.AddLine(row[0] + " = " + row[1]);
    const linux_platform::StorageView view = linux_platform::RequestScope()->GetStorage();
    EXPECT_EQ(Space::GetOverviewStatus(), row[2]);
    EXPECT_EQ(view.missing.empty() ? "" : view.missing.front().what, row[3]);
    EXPECT_LE(view.missing.size(), 1U);
    machine.AddLine("/run/systemd/container = lxc");
    EXPECT_EQ(Space::GetOverviewStatus(), "normal") << "its tables are of another machine";
  }
}

TEST(Storage, OfWhichMappingsOnlyRootKnowsHowTheyAre) {
  for (const auto& row : ReadTable("mappings-of-root", 3))
    EXPECT_EQ(linux_platform::OnlyRootKnows(row[0], row[1]), row[2] == "root") << row[0];
  for (const auto& row : ReadTable("missing-parts", 3))
    EXPECT_EQ(linux_platform::IsMissingPart(row[0], row[1]), row[2] == "danger") << row[0];
}

}  // namespace
