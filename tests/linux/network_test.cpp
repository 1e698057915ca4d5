// Against the real kernel, in a network namespace of the test's own thread.
#include <gtest/gtest.h>
#include <linux/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <stdlib.h>

#include <string>
#include <thread>

#include "platform/linux/parts/parts.h"
#include "tests/linux/machine_tree.h"
#include "tests/linux/table.h"
#include "vela_network.h"
#include "velac.h"

namespace {

// What a request makes of the calls: "name address type;" of each interface.
std::string List() {
  VLIB_NET_INTERFACE entries[64] = {};
  const int count = VLIBNetGetInterfaceInfo(entries, 64, 18);
  EXPECT_GE(count, 0);
  std::string list;
  for (int i = 0; i < count; ++i) {
    VELA_NETIF_INFO record = {};
    EXPECT_EQ(VELANetIFGetInfoEx(entries[i].name, 0, &record), 0);
    const int type = vela::network::GetIfType(entries[i].name, nullptr);
    list += std::string(i == 0 ? "" : " ") + entries[i].name + " " + record.address + " " +
            vela::network::GetTypeString(type) + ";";
  }
  return list;
}

int Shell(const std::string& commands) { return system(("set -e; " + commands).c_str()); }

// False: not allowed here, or no ip(8).
template <typename Body>
bool InNewNamespace(const Body& body) {
  bool possible = false;
  std::thread([&] {
    possible = unshare(CLONE_NEWNET) == 0 && Shell("ip link show lo >/dev/null 2>&1") == 0;
    if (possible) body();
  }).join();
  return possible;
}

TEST(Network, ShowsTheLinksThatCarryAddresses) {
  const bool possible = InNewNamespace([] {
    for (const auto& row : ReadTable("network-links", 3)) {
      ASSERT_EQ(Shell(row[1]), 0) << row[0];
      EXPECT_EQ(List(), row[2]) << row[0];
    }
  });
  if (!possible) GTEST_SKIP() << "needs root and ip(8)";
}

TEST(Network, ListsThirtyTwoOfManyInTheOrderOfTheirIndex) {
  const bool possible = InNewNamespace([] {
    // Index 300 comes before 290 where the kernel walks a table of 256 rows.
    std::string commands = "ip link add br0 index 500 type bridge;";
    const auto add = [&commands](int number, const std::string& index) {
      const std::string name = "mv" + std::to_string(number);
      commands += "ip link add link br0 name " + name + index +
                  " type macvlan; ip addr add 192.0.2." + std::to_string(number % 256) +
                  "/32 dev " + name + ";";
    };
    for (const int index : {300, 290, 257}) add(index, " index " + std::to_string(index));
    for (int number = 2; number < 32; ++number)
      add(number, " index " + std::to_string(598 + number));
    ASSERT_EQ(Shell(commands), 0);
    VLIB_NET_INTERFACE list[64];
    ASSERT_EQ(VLIBNetGetInterfaceInfo(list, 64, 18), 32);
    EXPECT_STREQ(list[0].name, "mv257");
    EXPECT_STREQ(list[1].name, "mv290");
    EXPECT_STREQ(list[2].name, "mv300");
    EXPECT_STREQ(list[31].name, "mv30");
    EXPECT_STREQ(vela::network::GetTypeString(vela::network::GetIfType("mv31", nullptr)), "macvlan")
        << "details of one that was not listed";

    EXPECT_EQ(VLIBNetGetInterfaceInfo(list, 2, 18), 2);
  });
  if (!possible) GTEST_SKIP() << "needs root and ip(8)";
}

TEST(Network, ADeviceIsWirelessWhenItsFolderIsOfThisNamespace) {
  const MachineTree machine;
  const auto type = [&](const char* index) {
    machine.Write("/sys/class/net/lo/ifindex", index);
    return std::string(vela::network::GetTypeString(vela::network::GetIfType("lo", nullptr)));
  };
  EXPECT_EQ(type("1\n"), "other");
  machine.Write("/sys/class/net/lo/phy80211/name", "phy0\n");
  EXPECT_EQ(type("1\n"), "wifi");
  EXPECT_EQ(type("2\n"), "other") << "the folder is another namespace's";
  EXPECT_EQ(type(""), "other");
}

TEST(Network, AnInterfaceIsAPartWithItsDriverAndAddresses) {
  const MachineTree machine;
  for (const char* line :
       {"/sys/class/net/eth0/ifindex = 2", "/sys/class/net/eth0/address = 02:00:00:00:00:07",
        "/sys/class/net/eth0/device/driver -> /sys/bus/pci/drivers/igb",
        "/sys/class/net/eth1/ifindex = 9", "/sys/class/net/eth1/address = of another namespace"})
    machine.AddLine(line);
  std::vector<linux_platform::Interface> interfaces(4);
  interfaces[0].link = {.index = 1, .flags = IFF_UP | IFF_LOOPBACK, .kind = "", .name = "lo"};
  interfaces[1].link = {.index = 2, .flags = IFF_UP | IFF_RUNNING, .kind = "", .name = "eth0"};
  interfaces[1].address = {.family = AF_INET, .bytes = {192, 0, 2, 7}};
  interfaces[1].addressRank = 0;
  interfaces[2].link = {.index = 3, .flags = IFF_UP, .kind = "", .name = "eth1"};
  interfaces[3].link = {.index = 4, .flags = IFF_UP, .kind = "bond", .name = "bond0"};
  std::string told;
  linux_platform::TellInterfaceParts(interfaces, [&told](const VELAPart& part) {
    told += source_status::kPartStateNames[static_cast<std::size_t>(part.state)];
    told += std::string(" ") + part.name + "," + part.model + "," + part.serial + "," + part.path +
            "; ";
  });
  EXPECT_EQ(told, "well eth0,igb,02:00:00:00:00:07,192.0.2.7; empty eth1,,,; empty bond0,bond,,; ");
}

TEST(Network, AnUnknownInterfaceHasNoDetails) {
  VELA_NETIF_INFO record = {};
  EXPECT_LT(VELANetIFGetInfoEx("no-such-link", 0, &record), 0);
  EXPECT_EQ(VLIBCErrGet(), 0x0B01U);
  EXPECT_LT(vela::network::GetIfType("no-such-link", nullptr), 0);
  EXPECT_LT(VELANetIFGetInfoEx(nullptr, 0, &record), 0);
}

}  // namespace
