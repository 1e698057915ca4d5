#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <fstream>

#include "platform/linux/contract/request.h"
#include "platform/linux/storage/disk_class.h"
#include "platform/linux/storage/external_choice.h"
#include "tests/linux/machine_tree.h"
#include "vela_storage.h"
#include "velac.h"

namespace {

using namespace linux_platform;

TEST(DiskClass, TheBusAndTheMarksDecideNotRemovability) {
  const struct {
    const char* why;
    DiskFacts facts;
    DiskClass kind;
  } cases[] = {
      {"SATA in a bay", {.ata = true}, DiskClass::Internal},
      {"NVMe", {}, DiskClass::Internal},
      {"a stick", {.usb = true}, DiskClass::Usb},
      {"a SATA disk in a USB box", {.usb = true, .ata = true, .markedEsata = true}, DiskClass::Usb},
      {"a USB card reader", {.usb = true, .cardReader = true}, DiskClass::SdCard},
      {"an SD card", {.memoryCard = true}, DiskClass::SdCard},
      {"a marked port", {.ata = true, .markedEsata = true}, DiskClass::Esata},
      {"mounted by a desktop", {.ata = true, .mountedAsMedia = true}, DiskClass::Esata},
      {"the system on a stick", {.usb = true, .carriesSystem = true}, DiskClass::Internal},
      {"the system on an SD card",
       {.memoryCard = true, .carriesSystem = true},
       DiskClass::Internal},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(ClassifyDisk(c.facts), c.kind);
  }
  EXPECT_LT(ToSortKey("/usb2/2-9/"), ToSortKey("/usb2/2-10/"));
}

TEST(External, AShareNameHasANumberAndPerhapsAPartition) {
  for (const char* name : {"usbshare1", "usbshare12-3", "sdshare1", "satashare2-1"})
    EXPECT_TRUE(IsShareName(name)) << name;
  for (const char* name : {"usbshare", "usbshare1-", "usbshare1-2-3", "usbshare1x", "share1",
                           "Usbshare1", "usbshare-1", "", "usbshare1234567"})
    EXPECT_FALSE(IsShareName(name)) << name;
}

constexpr const char* kUsb = "pci0000:00/0000:00:14.0/usb2/";

class ExternalMachine : public testing::Test {
 protected:
  ExternalMachine() {
    machine.Disk("sda", "pci0000:00/ata1/host0/target0:0:0/0:0:0:0", 8, 0, 1);
    machine.Disk("sdb", kUsb + std::string("2-10/2-10:1.0/host6/target6:0:0/6:0:0:0"), 8, 16, 2);
    machine.Disk("sdc", kUsb + std::string("2-9/2-9:1.0/host7/target7:0:0/7:0:0:0"), 8, 32, 1);
    machine.Disk("mmcblk0", "pci0000:00/mmc0/mmc0:0001", 179, 0, 1);
    machine.Write("/sys/devices/pci0000:00/mmc0/mmc0:0001/block/mmcblk0/device/type", "SD\n");
    machine.Disk("sdd", "pci0000:00/ata5/host4/target4:0:0/4:0:0:0", 8, 48, 1);
  }
  // "name=path" of each, as chosen from these mounts beside the root.
  std::string Chosen(const std::string& mounts) {
    machine.Mounts("1 0 8:1 / / rw - ext4 /dev/none/sda1 rw\n" + mounts);
    std::string text;
    const RequestScope request;
    for (const ExternalVolume& volume : request->GetStorage().external)
      text += volume.name + "=" + volume.path + " ";
    return text;
  }
  std::string Internal() {
    std::string text;
    const RequestScope request;
    for (const InternalVolume& volume : request->GetStorage().volumes) text += volume.path + " ";
    return text;
  }
  MachineTree machine;
};

TEST_F(ExternalMachine, RanksFollowThePortsAndPartitionsAreNumbered) {
  EXPECT_EQ(
      Chosen("2 1 8:18 / /b2 rw - vfat /dev/none/sdb2 rw\n"
             "3 1 8:17 / /b1 rw - vfat /dev/none/sdb1 rw\n"
             "4 1 8:33 / /c rw - ext4 /dev/none/sdc1 rw\n"
             "5 1 179:1 / /card rw - vfat /dev/none/mmcblk0p1 rw\n"
             "6 1 8:49 / /media/me/disk rw - ext4 /dev/none/sdd1 rw\n"),
      "usbshare1=/c usbshare2-1=/b1 usbshare2-2=/b2 sdshare1=/card satashare1=/media/me/disk ");
  EXPECT_EQ(Internal(), "/ ");
}

TEST_F(ExternalMachine, AMountPointThatIsAShareNameIsKeptAndNotGivenTwice) {
  EXPECT_EQ(Chosen("2 1 8:17 / /x/usbshare1-1 rw - vfat /dev/none/sdb1 rw\n"
                   "4 1 8:33 / /c rw - ext4 /dev/none/sdc1 rw\n"),
            "usbshare2=/c usbshare1-1=/x/usbshare1-1 ");
}

TEST_F(ExternalMachine, OnlyWritableFileSystemsThatCanBeReachedCount) {
  EXPECT_EQ(Chosen("2 1 8:17 / /iso rw - iso9660 /dev/none/sdb1 ro\n"
                   "3 1 8:18 / /ro ro - ext4 /dev/none/sdb2 ro\n"
                   "4 1 0:60 / /n rw - nfs s:/x rw\n"
                   "5 4 8:33 / /n/c rw - ext4 /dev/none/sdc1 rw\n"),
            "");
  EXPECT_EQ(Chosen("2 1 8:33 / /c rw - vfat /dev/none/sdc1 rw\n"
                   "3 1 8:33 /sub /bind rw - vfat /dev/none/sdc1 rw\n"),
            "usbshare1=/c ");
}

TEST_F(ExternalMachine, AnEncryptedStickIsExternalThroughItsMapping) {
  machine.Mapped("dm-0", 253, 0, {"sdb2"});
  EXPECT_EQ(Chosen("2 1 253:0 / /secret rw - ext4 /dev/none/luks rw\n"), "usbshare1-2=/secret ");
}

TEST_F(ExternalMachine, AStickThatWasPulledIsNoCrashedVolume) {
  machine.Write("/etc/fstab", "UUID=1 /data ext4 defaults 0 2\n");
  EXPECT_EQ(Chosen("2 1 8:81 / /mnt/stick rw - ext4 /dev/none/sdf1 rw\n"
                   "3 1 8:97 / /data rw - ext4 /dev/none/sdg1 rw\n"),
            "");
  EXPECT_EQ(Internal(), "/ /data ");
  EXPECT_EQ(RequestScope()->GetStorage().volumes.at(1).status, "crashed");
}

TEST_F(ExternalMachine, PortsNamedInTheSettingsAreEsata) {
  machine.Write("/etc/velainfo.conf", "esata.ports=\"4, 5\"\n");
  EXPECT_EQ(Chosen("2 1 8:49 / /d rw - ext4 /dev/none/sdd1 rw\n"), "satashare1=/d ");
}

TEST_F(ExternalMachine, AListHasTheNamesAndBytesOfItsClass) {
  // A real folder under a btrfs's anonymous number, so that there is something to measure.
  const std::string folder = machine.Path().string();
  Chosen("2 1 0:70 / " + folder + " rw - btrfs /dev/none/sdb1 rw\n" +
         "3 1 0:71 / /no/such/folder rw - btrfs /dev/none/sdc1 rw\n");
  EXPECT_EQ(VELAMountVolAllEnum(0, 8, 0), nullptr);
  const std::filesystem::space_info before = std::filesystem::space(folder);
  VELA_MOUNT_VOL_INFO* list = VELAMountVolAllEnum(0, 4, 0);
  ASSERT_NE(list, nullptr);
  EXPECT_STREQ(list->name, "usbshare2-1");
  const std::filesystem::space_info space = std::filesystem::space(folder);
  EXPECT_EQ(list->totalSize, space.capacity);
  EXPECT_GT(list->freeSize, 0U);
  EXPECT_LE(list->freeSize, std::max(before.free, space.free))
      << "others may write at the same time";
  EXPECT_EQ(list->next, nullptr) << "the other one could not be measured";
  VELAMountVolInfoFree(list);
  VELAMountVolInfoFree(nullptr);
  EXPECT_TRUE(VELAUsbIsCardreader("sdshare1"));
  EXPECT_FALSE(VELAUsbIsCardreader("usbshare1"));
}

TEST_F(ExternalMachine, AProgramsFileSystemHasTheSizesThatTheCollectorSaw) {
  Chosen("2 1 0:70 / /ntfs rw - fuseblk /dev/none/sdc1 rw\n");
  EXPECT_EQ(VELAMountVolAllEnum(0, 4, 0), nullptr) << "no collector has asked it";
  machine.Write("/proc/sys/kernel/random/boot_id", "boot\n");
  machine.Write("/run/vela-platform/fuseblk.json",
                "{\"written\": " + std::to_string(time(nullptr)) +
                    ", \"boot_id\": \"boot\", \"period\": 60, \"mounts\": "
                    "[{\"path\": \"/ntfs\", \"total\": 1000, \"free\": 30}]}");
  VELA_MOUNT_VOL_INFO* list = VELAMountVolAllEnum(0, 4, 0);
  ASSERT_NE(list, nullptr);
  EXPECT_STREQ(list->name, "usbshare1");
  EXPECT_EQ(list->totalSize, 1000U);
  EXPECT_EQ(list->freeSize, 30U);
  VELAMountVolInfoFree(list);
}

// Run under umockdev-run, which shows libudev a machine of its own.
TEST(Udev, PropertiesMarkCardReadersAndExternalPorts) {
  if (getenv("UMOCKDEV_DIR") == nullptr) GTEST_SKIP() << "needs umockdev-run";
  EXPECT_EQ(ClassifyDisk(ReadDiskFacts("sdb", {})), DiskClass::Usb);
  EXPECT_EQ(ClassifyDisk(ReadDiskFacts("sdc", {})), DiskClass::SdCard);
  EXPECT_EQ(ClassifyDisk(ReadDiskFacts("sdd", {})), DiskClass::Esata);
  EXPECT_EQ(ClassifyDisk(ReadDiskFacts("sde", {})), DiskClass::Internal)
      << "removable, but in a bay";
  EXPECT_EQ(ClassifyDisk(ReadDiskFacts("sdf", {})), DiskClass::SdCard);

  // What it said is kept until udev writes its record of the disk anew.
  const TemporaryRoot root;
  std::string number;
  std::ifstream("/sys/class/block/sdb/dev") >> number;
  std::ofstream("/sys/class/block/sdb/uevent", std::ios::app) << "VELA_SDCARD=1\n";
  EXPECT_EQ(ClassifyDisk(ReadDiskFacts("sdb", {})), DiskClass::Usb);
  root.Write("/run/udev/data/b" + number, "");
  EXPECT_EQ(ClassifyDisk(ReadDiskFacts("sdb", {})), DiskClass::SdCard);
}

}  // namespace
