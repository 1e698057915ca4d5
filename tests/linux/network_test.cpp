// Against the real kernel, in a network namespace of the test's own thread.
#include <gtest/gtest.h>
#include <sched.h>
#include <stdlib.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "tests/linux/machine_tree.h"
#include "vela_network.h"
#include "velac.h"

namespace {

struct Shown {
  std::string name, address, type;
  bool operator==(const Shown&) const = default;
};

void PrintTo(const Shown& shown, std::ostream* out) {
  *out << shown.name << " " << shown.address << " " << shown.type;
}

// What a request makes of the calls, interface by interface.
std::vector<Shown> List() {
  VLIB_NET_INTERFACE entries[32] = {};
  const int count = VLIBNetGetInterfaceInfo(entries, 32, 18);
  EXPECT_GE(count, 0);
  std::vector<Shown> list;
  for (int i = 0; i < count; ++i) {
    VELA_NETIF_INFO record = {};
    EXPECT_EQ(VELANetIFGetInfoEx(entries[i].name, 0, &record), 0);
    const int type = vela::network::GetIfType(entries[i].name, nullptr);
    list.push_back({entries[i].name, record.address, vela::network::GetTypeString(type)});
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
    EXPECT_EQ(List(), std::vector<Shown>()) << "loopback only";
    ASSERT_EQ(Shell("ip link add veth0 type veth peer name veth1;"
                    "ip addr add 192.0.2.9/24 dev veth0; ip link set veth0 up"),
              0);
    EXPECT_EQ(List(), (std::vector<Shown>{{"veth0", "192.0.2.9", "veth"}})) << "a container";
    ASSERT_EQ(Shell("ip link add br0 type bridge; ip link add br1 type bridge;"
                    "ip link set veth1 master br0;"
                    "ip addr add 2001:db8::7/64 dev br0 nodad;"
                    "ip addr add 192.0.2.1/24 dev br0; ip addr add 192.0.2.2/24 dev br0;"
                    "ip addr add 198.51.100.1/24 dev br0;"
                    "ip tuntap add tun0 mode tun; ip addr add 192.0.2.5 peer 192.0.2.6 dev tun0;"
                    "ip link add link br0 name mv0 type macvlan;"
                    "ip addr add fe80::5/64 dev mv0 nodad"),
              0);
    const std::vector<Shown> expected = {{"br0", "192.0.2.1", "bridge"},
                                         {"tun0", "192.0.2.5", "tun"},
                                         {"mv0", "fe80::5", "macvlan"}};
    EXPECT_EQ(List(), expected);

    ASSERT_EQ(Shell("ip addr flush dev br0; ip addr add 2001:db8::8/64 dev br0 nodad"), 0);
    EXPECT_EQ(List().at(0).address, "2001:db8::8");
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
    const std::vector<Shown> list = List();
    ASSERT_EQ(list.size(), 32U);
    EXPECT_EQ(list[0].name, "mv257");
    EXPECT_EQ(list[1].name, "mv290");
    EXPECT_EQ(list[2].name, "mv300");
    EXPECT_EQ(list[31].name, "mv30");
    EXPECT_STREQ(vela::network::GetTypeString(vela::network::GetIfType("mv31", nullptr)), "macvlan")
        << "details of one that was not listed";

    VLIB_NET_INTERFACE two[2];
    EXPECT_EQ(VLIBNetGetInterfaceInfo(two, 2, 18), 2);
    EXPECT_STREQ(two[1].name, "mv290");
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

TEST(Network, AnUnknownInterfaceHasNoDetails) {
  VELA_NETIF_INFO record = {};
  EXPECT_LT(VELANetIFGetInfoEx("no-such-link", 0, &record), 0);
  EXPECT_EQ(VLIBCErrGet(), 0x0B01U);
  EXPECT_LT(vela::network::GetIfType("no-such-link", nullptr), 0);
  EXPECT_LT(VELANetIFGetInfoEx(nullptr, 0, &record), 0);
}

}  // namespace
