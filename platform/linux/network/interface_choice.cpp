#include "platform/linux/network/interface_choice.h"

#include <arpa/inet.h>
#include <linux/if.h>
#include <linux/if_addr.h>
#include <linux/if_arp.h>
#include <linux/rtnetlink.h>

#include <algorithm>
#include <array>

namespace linux_platform {
namespace {

enum class Shown { Always, WithAddress, Never };

struct Kind {
  const char* name;  // the kernel's word for the kind, and the type name
  Shown shown;
};

constexpr std::array kKinds = {
    Kind{"bond", Shown::Always},           Kind{"team", Shown::Always},
    Kind{"vlan", Shown::Always},           Kind{"bridge", Shown::WithAddress},
    Kind{"macvlan", Shown::WithAddress},   Kind{"ipvlan", Shown::WithAddress},
    Kind{"wireguard", Shown::WithAddress}, Kind{"tun", Shown::WithAddress},
    Kind{"ppp", Shown::WithAddress},       Kind{"veth", Shown::Never},
    Kind{"dummy", Shown::Never},           Kind{"ifb", Shown::Never},
};

// Type numbers: the kinds by their row, then the types that are not kinds.
constexpr int kLan = kKinds.size(), kWifi = kLan + 1, kOther = kLan + 2;
constexpr auto kPpp = std::ranges::find(kKinds, std::string_view("ppp"), &Kind::name);

auto FindKind(const Link& link) {
  return std::ranges::find(kKinds, std::string_view(link.kind), &Kind::name);
}

}  // namespace

bool IsShown(const Link& link, bool hasAddress) {
  if ((link.flags & IFF_LOOPBACK) != 0 || link.master != 0) return false;
  if (link.kind.empty()) return true;
  const auto kind = FindKind(link);
  if (kind == kKinds.end() || kind->shown == Shown::Never) return false;
  return kind->shown == Shown::Always || hasAddress;
}

bool IsContainersOwn(const Link& link, bool hasAddress) {
  return link.kind == "veth" && link.master == 0 && hasAddress;
}

int RankAddress(const Address& address) {
  constexpr unsigned kUnfit = IFA_F_DEPRECATED | IFA_F_TENTATIVE | IFA_F_DADFAILED;
  if ((address.flags & kUnfit) != 0) return -1;
  const bool v4 = address.family == AF_INET;
  if (!v4 && address.family != AF_INET6) return -1;
  // One flag with two names: a second address of a subnet, a temporary IPv6 address.
  static_assert(IFA_F_SECONDARY == IFA_F_TEMPORARY);
  if ((address.flags & IFA_F_SECONDARY) != 0) return -1;
  if (address.scope == RT_SCOPE_UNIVERSE) return v4 ? 0 : 1;
  if (address.scope == RT_SCOPE_LINK) return v4 ? 2 : 3;
  return -1;
}

std::string FormatAddress(const Address& address) {
  char text[INET6_ADDRSTRLEN] = {};
  inet_ntop(address.family, address.bytes, text, sizeof text);
  return text;
}

int GetTypeNumber(const Link& link, bool wireless) {
  if (link.hardware == ARPHRD_PPP) return static_cast<int>(kPpp - kKinds.begin());
  if (!link.kind.empty()) {
    const auto kind = FindKind(link);
    return kind == kKinds.end() ? kOther : static_cast<int>(kind - kKinds.begin());
  }
  if (wireless) return kWifi;
  return link.hardware == ARPHRD_ETHER ? kLan : kOther;
}

const char* GetTypeName(int type) {
  if (type == kLan) return "lan";
  if (type == kWifi) return "wifi";
  const bool isKind = type >= 0 && type < static_cast<int>(kKinds.size());
  return isKind ? kKinds[static_cast<std::size_t>(type)].name : "other";
}

}  // namespace linux_platform
