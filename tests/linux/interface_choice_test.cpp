#include "platform/linux/network/interface_choice.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <linux/if.h>
#include <linux/if_arp.h>

#include "tests/linux/table.h"

namespace {

using namespace linux_platform;

TEST(InterfaceChoice, KindAndAddressDecideWhatIsShownAndHowItIsCalled) {
  for (const auto& row : ReadTable("interface-kinds", 5)) {
    SCOPED_TRACE(row[0] + " " + row[1]);
    Link link;
    link.kind = row[0];
    link.hardware = row[1] == "ether"   ? ARPHRD_ETHER
                    : row[1] == "ppp"   ? ARPHRD_PPP
                    : row[1] == "rawip" ? ARPHRD_RAWIP
                                        : ARPHRD_NONE;
    EXPECT_EQ(IsShown(link, false), row[3] == "yes");
    EXPECT_EQ(IsShown(link, true), row[3] != "no");
    EXPECT_EQ(GetTypeName(GetTypeNumber(link, row[2] == "yes")), row[4]);
    link.master = 7;
    EXPECT_FALSE(IsShown(link, true)) << "a member of a bond or bridge";
    link.master = 0;
    link.flags = IFF_LOOPBACK;
    EXPECT_FALSE(IsShown(link, true));
  }
  EXPECT_STREQ(GetTypeName(-1), "other");
  EXPECT_STREQ(GetTypeName(1000), "other");
}

TEST(InterfaceChoice, TheAddressIsGlobalV4ThenGlobalV6ThenLinkLocal) {
  for (const auto& row : ReadTable("address-ranks", 5)) {
    SCOPED_TRACE(row[1]);
    Address address;
    address.family = row[1].find(':') == std::string::npos ? AF_INET : AF_INET6;
    address.scope = static_cast<std::uint8_t>(std::stoi(row[2]));
    address.flags = static_cast<unsigned>(std::stoi(row[3], nullptr, 0));
    ASSERT_EQ(inet_pton(address.family, row[1].c_str(), address.bytes), 1);
    EXPECT_EQ(RankAddress(address), std::stoi(row[4]));
    EXPECT_EQ(FormatAddress(address), row[1]);
    address.family = AF_MPLS;
    EXPECT_EQ(RankAddress(address), -1);
  }
}

}  // namespace
