#include "platform/linux/network/interface_choice.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <linux/if.h>
#include <linux/if_addr.h>
#include <linux/if_arp.h>
#include <linux/rtnetlink.h>

namespace {

using namespace linux_platform;

TEST(InterfaceChoice, KindAndAddressDecideWhatIsShownAndHowItIsCalled) {
  const struct {
    const char* kind;
    unsigned short hardware;
    bool shown, shownWithAddress;
    const char* type;
  } cases[] = {
      {"", ARPHRD_ETHER, true, true, "lan"},
      {"", ARPHRD_RAWIP, true, true, "other"},
      {"", ARPHRD_PPP, true, true, "ppp"},
      {"bond", ARPHRD_ETHER, true, true, "bond"},
      {"team", ARPHRD_ETHER, true, true, "team"},
      {"vlan", ARPHRD_ETHER, true, true, "vlan"},
      {"bridge", ARPHRD_ETHER, false, true, "bridge"},
      {"macvlan", ARPHRD_ETHER, false, true, "macvlan"},
      {"ipvlan", ARPHRD_ETHER, false, true, "ipvlan"},
      {"wireguard", ARPHRD_NONE, false, true, "wireguard"},
      {"tun", ARPHRD_NONE, false, true, "tun"},
      {"ppp", ARPHRD_PPP, false, true, "ppp"},
      {"veth", ARPHRD_ETHER, false, false, "veth"},
      {"dummy", ARPHRD_ETHER, false, false, "dummy"},
      {"ifb", ARPHRD_ETHER, false, false, "ifb"},
      {"vxlan", ARPHRD_ETHER, false, false, "other"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.kind);
    Link link;
    link.kind = c.kind;
    link.hardware = c.hardware;
    EXPECT_EQ(IsShown(link, false), c.shown);
    EXPECT_EQ(IsShown(link, true), c.shownWithAddress);
    EXPECT_STREQ(GetTypeName(GetTypeNumber(link, false)), c.type);
    link.master = 7;
    EXPECT_FALSE(IsShown(link, true)) << "a member of a bond or bridge";
    link.master = 0;
    link.flags = IFF_LOOPBACK;
    EXPECT_FALSE(IsShown(link, true));
  }
}

TEST(InterfaceChoice, OnlyADeviceIsWireless) {
  Link link;
  link.hardware = ARPHRD_ETHER;
  EXPECT_STREQ(GetTypeName(GetTypeNumber(link, true)), "wifi");
  link.kind = "vlan";
  EXPECT_STREQ(GetTypeName(GetTypeNumber(link, true)), "vlan");
  EXPECT_STREQ(GetTypeName(-1), "other");
  EXPECT_STREQ(GetTypeName(1000), "other");
}

TEST(InterfaceChoice, TheAddressIsGlobalV4ThenGlobalV6ThenLinkLocal) {
  const struct {
    const char* text;
    std::uint8_t family, scope;
    unsigned flags;
    int rank;
  } cases[] = {
      {"192.0.2.7", AF_INET, RT_SCOPE_UNIVERSE, IFA_F_PERMANENT, 0},
      {"2001:db8::7", AF_INET6, RT_SCOPE_UNIVERSE, IFA_F_MANAGETEMPADDR, 1},
      {"169.254.3.4", AF_INET, RT_SCOPE_LINK, 0, 2},
      {"fe80::1", AF_INET6, RT_SCOPE_LINK, IFA_F_PERMANENT, 3},
      {"192.0.2.8", AF_INET, RT_SCOPE_UNIVERSE, IFA_F_SECONDARY, -1},
      {"192.0.2.9", AF_INET, RT_SCOPE_UNIVERSE, IFA_F_DEPRECATED, -1},
      {"2001:db8::8", AF_INET6, RT_SCOPE_UNIVERSE, IFA_F_TEMPORARY, -1},
      {"2001:db8::9", AF_INET6, RT_SCOPE_UNIVERSE, IFA_F_TENTATIVE, -1},
      {"2001:db8::a", AF_INET6, RT_SCOPE_UNIVERSE, IFA_F_DADFAILED, -1},
      {"127.0.0.2", AF_INET, RT_SCOPE_HOST, 0, -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    Address address;
    address.family = c.family;
    address.scope = c.scope;
    address.flags = c.flags;
    ASSERT_EQ(inet_pton(c.family, c.text, address.bytes), 1);
    EXPECT_EQ(RankAddress(address), c.rank);
    EXPECT_EQ(FormatAddress(address), c.text);
  }
  Address other;
  other.family = AF_MPLS;
  EXPECT_EQ(RankAddress(other), -1);
}

}  // namespace
