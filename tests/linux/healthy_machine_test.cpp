// Healthy machines of every kind: each says so, reads what it has, and logs nothing.
#include <gtest/gtest.h>

#include "tests/linux/full_machine.h"

namespace {

struct Kind {
  const char* name;
  void (*make)(FullMachine& machine);
};
void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }

// Three disks under an array of the level that is being built.
void Building(FullMachine& machine, const char* level, const char* action, int degraded,
              const char* third) {
  machine.Disk("sdc", "pci0/ata3/host2/target2:0:0/2:0:0:0", 8, 32, 1);
  machine.Disk("sdd", "pci0/ata4/host3/target3:0:0/3:0:0:0", 8, 48, 1);
  machine.Disk("sde", "pci0/ata5/host4/target4:0:0/4:0:0:0", 8, 64, 1);
  machine.Array("md1", 1, level, "clean", 3, degraded,
                {{"sdc1", "in_sync", "0"}, {"sdd1", "in_sync", "1"}, {"sde1", third, "2"}});
  machine.Write("/sys/devices/virtual/block/md1/md/sync_action", std::string(action) + "\n");
}

const Kind kKinds[] = {
    {"EverythingIsThere", [](auto&) {}},
    {"NoSysfs",
     [](auto& machine) {
       std::filesystem::remove_all(machine.Path() / "sys");
       std::filesystem::create_directory(machine.Path() / "sys");
     }},
    {"NoDaemons",
     [](auto& machine) {
       for (const char* folder : {"usr", "run", "etc", "proc/net"})
         std::filesystem::remove_all(machine.Path() / folder);
     }},
    {"UpsWithAWornBattery",
     [](auto& machine) {
       machine.Upsd([](int client) {
         while (FakeServer::Line(client).starts_with("GET VAR"))
           FakeServer::Send(client, "VAR rack ups.status \"OL CHRG LB RB\"\n");
       });
     }},
    {"MirrorInItsFirstResync",
     [](auto& machine) { Building(machine, "raid1", "resync", 0, "in_sync"); }},
    {"Raid6InItsFirstResync",
     [](auto& machine) { Building(machine, "raid6", "resync", 0, "in_sync"); }},
    {"Raid5InItsFirstBuild",
     [](auto& machine) {
       Building(machine, "raid5", "recover", 1, "spare");
       machine.Snapshot("md", R"("arrays": {"md0": "built", "md1": "first build"})", 0);
     }},
    {"Raid5ThatWasJustMade",
     [](auto& machine) {
       Building(machine, "raid5", "recover", 1, "spare");
       machine.Snapshot("md", R"("arrays": {"md0": "built"})", 50);
     }},
    {"ArrayUnderCheck", [](auto& machine) { Building(machine, "raid5", "check", 0, "in_sync"); }},
    {"LiveCd",
     [](auto& machine) {
       machine.Disk("sr0", "pci0/ata2/host9/target9:0:0/9:0:0:0", 11, 0);
       machine.Disk("loop0", "virtual", 7, 0);
       machine.Mounts(
           "1 0 0:30 / / rw - overlay overlay rw\n"
           "2 1 11:0 / /run/live/medium ro - iso9660 /dev/sr0 ro\n"
           "3 1 7:0 / /run/live/rootfs ro - squashfs /dev/loop0 ro\n");
     }},
    {"LoopsAndSnaps",
     [](auto& machine) {
       machine.Disk("loop0", "virtual", 7, 0);
       machine.Disk("loop1", "virtual", 7, 1);
       machine.AlsoMounted(
           "2 1 7:0 / /snap/core/1 ro - squashfs /dev/loop0 ro\n"
           "3 1 7:1 / /mnt/image rw - ext4 /dev/loop1 rw\n");
     }},
    {"EmmcSystemDisk",
     [](auto& machine) {
       machine.Disk("mmcblk0", "pci0/mmc0/mmc0:0001", 179, 0, 2);
       machine.Disk("mmcblk0boot0", "pci0/mmc0/mmc0:0001/block/mmcblk0", 179, 8);
       machine.Write("/sys/devices/pci0/mmc0/mmc0:0001/block/mmcblk0/device/type", "MMC\n");
       machine.AlsoMounted("2 1 179:1 / /boot rw - ext4 /dev/mmcblk0p1 rw\n");
     }},
    {"RemovableBays",
     [](auto& machine) {
       for (const char* disk : {"sda", "sdb"})
         machine.Write(std::string("/sys/class/block/") + disk + "/removable", "1\n");
     }},
    {"EmptyCardReader",
     [](auto& machine) {
       const std::string bus = "pci0/usb1/1-2/1-2:1.0/host6/target6:0:0/6:0:0:0";
       machine.Disk("sdd", bus, 8, 48);
       machine.Write("/sys/devices/" + bus + "/block/sdd/size", "0\n");
       machine.Write("/sys/devices/" + bus + "/block/sdd/removable", "1\n");
     }},
    {"OneLaptopPlugThatIsOut",
     [](auto& machine) {
       machine.Write("/sys/class/power_supply/AC/type", "Mains\n");
       machine.Write("/sys/class/power_supply/AC/online", "0\n");
     }},
    {"AutomountThatNobodyUsed",
     [](auto& machine) {
       machine.AlsoMounted(
           "2 1 0:52 / /net rw - autofs systemd-1 rw\n"
           "3 1 0:53 / /srv/cloud rw - fuse.sshfs me@host: rw\n");
     }},
};

class HealthyMachine : public testing::TestWithParam<Kind> {};

TEST_P(HealthyMachine, SaysSoAndLogsNothing) {
  FullMachine machine;
  if (!machine.bus->Runs()) GTEST_SKIP() << "needs dbus-daemon: apt-get install dbus-daemon";
  GetParam().make(machine);
  if (!machine.Enter()) GTEST_SKIP() << "needs root";
  const auto lines = machine.Answers("2");
  SCOPED_TRACE(testing::PrintToString(lines));
  ASSERT_EQ(machine.status, 0);
  EXPECT_NE(lines.at(0).find("widget:system_ok"), std::string::npos);
  for (const std::string& line : lines) {
    EXPECT_FALSE(line.starts_with("log ")) << line;
    EXPECT_FALSE(line.starts_with("changed ")) << line;
    EXPECT_FALSE(line.starts_with("source ") && line.find(": failed ") != std::string::npos)
        << line;
  }
}

INSTANTIATE_TEST_SUITE_P(Each, HealthyMachine, testing::ValuesIn(kKinds),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
