// Which network interfaces are shown, under what type name and with which address.
// Pure functions over what the kernel's dumps say.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace linux_platform {

struct Link {
  int index = 0;
  int master = 0;  // index of the bond or bridge that it belongs to
  unsigned flags = 0;
  unsigned short hardware = 0;  // ARPHRD_...
  std::string kind;             // of a virtual link: "vlan", "bridge"; empty for a device
  std::string name;
};

struct Address {
  int index = 0;  // of its link
  std::uint8_t family = 0;
  std::uint8_t scope = 0;
  unsigned flags = 0;           // IFA_F_...
  std::uint8_t bytes[16] = {};  // network order, 4 or 16 in use
};

// Whether the link carries the machine's addresses: a device, bond, team or VLAN; a
// bridge or tunnel only once it has an address. Never a loopback, a member of another
// link, or one of the kinds that containers and tests create.
bool IsShown(const Link& link, bool hasAddress);

// Whether the link may be a container's way out, where nothing else is shown: one end of a
// pair with an address. On the machine itself such ends are the other halves of containers.
bool IsContainersOwn(const Link& link, bool hasAddress);

// How preferable the address is: lower is better; negative: not fit to be shown. Global IPv4 (no
// secondary one), global IPv6 (no temporary one), link-local IPv4, link-local IPv6. Addresses that
// are deprecated, or not confirmed to be this machine's own, are never shown.
int RankAddress(const Address& address);

// Dotted or colon text without a zone.
std::string FormatAddress(const Address& address);

// The number of the link's type, which GetTypeName puts into words: "lan", "wifi", "bond".
// `wireless` counts for devices only.
int GetTypeNumber(const Link& link, bool wireless);
const char* GetTypeName(int type);  // "other" for what is no type's number

}  // namespace linux_platform
