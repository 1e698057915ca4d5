// What the collector and libudev say of external volumes. Which mounts are some, and their names,
// is in the machines of tests/fixtures/linux/machines.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>

#include "platform/linux/storage/disk_class.h"
#include "tests/linux/machine_tree.h"
#include "tests/linux/source_statuses.h"
#include "vela_storage.h"
#include "velac.h"

namespace {

using namespace linux_platform;

TEST(External, AProgramsFileSystemHasTheSizesThatTheCollectorSaw) {
  MachineTree machine;
  machine.Disk("sdc", "pci0/usb2/2-9/2-9:1.0/host7/target7:0:0/7:0:0:0", 8, 32, 2);
  machine.Mounts(
      "1 0 0:70 / /ntfs rw - fuseblk /dev/none/sdc1 rw\n"
      "2 0 0:71 / /exfat rw - fuseblk /dev/none/sdc2 rw\n");
  const auto told = [] {
    VELAPlatformSourcesReset();
    std::string text;
    VELA_MOUNT_VOL_INFO* list = VELAMountVolAllEnum(0, 4, 0);
    for (const auto* each = list; each != nullptr; each = each->next)
      text += std::string(each->name) + " " + std::to_string(each->freeSize) + " of " +
              std::to_string(each->totalSize) + "; ";
    VELAMountVolInfoFree(list);
    return text + SourceReports()["external volumes"].reason;
  };
  EXPECT_EQ(
      told(),
      "the capacity of /exfat could not be read: "
      "only root asks it, and vela-platform-collect, which does so in our place, does not run");
  EXPECT_EQ(SourceReports()["external volumes"].Name(), "unwatched");
  const auto write = [&](const std::string& mounts) {
    machine.Write("/proc/sys/kernel/random/boot_id", "boot\n");
    machine.Write("/run/vela-platform/fuseblk.json",
                  "{\"written\": " + std::to_string(time(nullptr)) +
                      ", \"boot_id\": \"boot\", \"period\": 60, \"mounts\": " + mounts + "}");
  };
  write(R"([{"path": "/ntfs", "total": 1000, "free": 30}])");
  EXPECT_EQ(told(),
            "usbshare1-1 30 of 1000; the capacity of /exfat could not be read: it did not answer");
  write(R"([{"path": "/ntfs", "total": 5, "free": 3}, {"path": "/exfat", "total": 7, "free": 0}])");
  EXPECT_EQ(told(), "usbshare1-1 3 of 5; usbshare1-2 0 of 7; ");
  write("7");
  EXPECT_EQ(told(), "the capacity of /exfat could not be read: it did not answer");
  EXPECT_TRUE(VELAUsbIsCardreader("sdshare1"));
  EXPECT_FALSE(VELAUsbIsCardreader("usbshare1"));
  EXPECT_FALSE(VELAUsbIsCardreader(nullptr));
}

// Run under umockdev-run, which shows libudev a machine of its own.
TEST(Udev, PropertiesMarkCardReadersAndExternalPorts) {
  if (getenv("UMOCKDEV_DIR") == nullptr) GTEST_SKIP() << "needs umockdev-run";
  const auto classify = [](const char* disk) { return ClassifyDisk(ReadDiskFacts(disk, {})); };
  EXPECT_EQ(classify("sdb"), DiskClass::Usb);
  EXPECT_EQ(classify("sdc"), DiskClass::SdCard);
  EXPECT_EQ(classify("sdd"), DiskClass::Esata);
  EXPECT_EQ(classify("sde"), DiskClass::Internal) << "removable, but in a bay";
  EXPECT_EQ(classify("sdf"), DiskClass::SdCard);

  // What it said is kept until udev writes its record of the disk anew.
  const TemporaryRoot root;
  std::string number;
  std::ifstream("/sys/class/block/sdb/dev") >> number;
  std::ofstream("/sys/class/block/sdb/uevent", std::ios::app) << "VELA_SDCARD=1\n";
  EXPECT_EQ(classify("sdb"), DiskClass::Usb);
  root.Write("/run/udev/data/b" + number, "");
  EXPECT_EQ(classify("sdb"), DiskClass::SdCard);
}

}  // namespace
