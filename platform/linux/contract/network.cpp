// The interfaces that carry the machine's addresses, and the details of each.
#include <algorithm>
#include <cstring>

#include "platform/linux/base/sysfs.h"
#include "platform/linux/contract/error.h"
#include "platform/linux/contract/request.h"
#include "platform/status/source_status.h"
#include "vela_network.h"
#include "velac.h"

using namespace linux_platform;
using source_status::Source, source_status::SourceScope;

namespace {

constexpr int kMostShown = 32;

// Only a device of this network namespace counts: /sys may show another one's.
bool IsWireless(const Link& link) {
  const std::string folder = Sys("/class/net/", link.name);
  return PathExists(folder + "/phy80211") && NumberAttribute(folder + "/ifindex") == link.index;
}

const std::vector<Interface>* GetInterfaces(Request& request, SourceScope& scope) {
  std::string reason;
  const std::vector<Interface>* interfaces = request.GetInterfaces(reason);
  if (interfaces != nullptr) return interfaces;
  scope.Failed("journalctl -b", "%s", reason.c_str());
  SetError(Error::Netlink);
  return nullptr;
}

// Any interface, shown or not; null with the error set.
const Interface* FindInterface(const char* name, Request& request, SourceScope& scope) {
  if (name == nullptr) {
    SetError(Error::BadArgument);
    return nullptr;
  }
  const std::vector<Interface>* interfaces = GetInterfaces(request, scope);
  if (interfaces == nullptr) return nullptr;
  const auto found =
      std::ranges::find(*interfaces, std::string_view(name),
                        [](const Interface& each) { return std::string_view(each.link.name); });
  if (found != interfaces->end()) return &*found;
  SetError(Error::NoSuchInterface);
  return nullptr;
}

// Lists those that are `fit`, as far as there are entries; how many.
int ListNames(const std::vector<Interface>& interfaces, bool (*fit)(const Link&, bool),
              VLIB_NET_INTERFACE* entries, int most) {
  int count = 0;
  for (const Interface& interface : interfaces) {
    if (count == most) break;
    if (!fit(interface.link, interface.hasAddress)) continue;
    VLIB_NET_INTERFACE& entry = entries[count++] = {};
    interface.link.name.copy(entry.name, sizeof entry.name - 1);
  }
  return count;
}

}  // namespace

int VLIBNetGetInterfaceInfo(VLIB_NET_INTERFACE* entries, int count, int) {
  SourceScope scope(Source::Network);
  if (entries == nullptr || count < 0) return SetError(Error::BadArgument);
  const RequestScope request;
  const std::vector<Interface>* interfaces = GetInterfaces(*request, scope);
  if (interfaces == nullptr) return -1;
  const int most = std::min(count, kMostShown);
  const int shown = ListNames(*interfaces, IsShown, entries, most);
  return shown > 0 ? shown : ListNames(*interfaces, IsContainersOwn, entries, most);
}

int VELANetIFGetInfoEx(const char* name, int, VELA_NETIF_INFO* record) {
  SourceScope scope(Source::Network);
  if (record == nullptr) return SetError(Error::BadArgument);
  const RequestScope request;
  const Interface* interface = FindInterface(name, *request, scope);
  if (interface == nullptr) return -1;
  std::memset(record->address, 0, sizeof record->address);
  if (interface->addressRank >= 0)
    FormatAddress(interface->address).copy(record->address, sizeof record->address - 1);
  return 0;
}

namespace vela::network {

int GetIfType(const char* name, void*) {
  SourceScope scope(Source::Network);
  const RequestScope request;
  const Interface* interface = FindInterface(name, *request, scope);
  if (interface == nullptr) return -1;
  const Link& link = interface->link;
  return GetTypeNumber(link, link.kind.empty() && IsWireless(link));
}

const char* GetTypeString(int type) { return GetTypeName(type); }

}  // namespace vela::network
