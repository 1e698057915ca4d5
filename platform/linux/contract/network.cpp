// The interfaces that carry the machine's addresses, and the details of each.
#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstring>

#include <unistd.h>

#include "platform/linux/base/root.h"
#include "platform/linux/contract/error.h"
#include "platform/linux/network/netlink.h"
#include "platform/status/source_status.h"
#include "vela_network.h"
#include "velac.h"

using namespace linux_platform;
using source_status::Source, source_status::SourceScope;

namespace {

constexpr int kMostShown = 32;
constexpr auto kListingFresh = std::chrono::milliseconds(500);

struct Details {
  char name[16];  // the kernel's limit
  char address[sizeof(VELA_NETIF_INFO::address)];
  int type;
};

// A request lists the interfaces and then asks for each one's details. Both come out of
// the listing's two dumps: questions that follow it at once, in its thread, are
// answered from here. Any other question reads afresh.
struct Listing {
  std::chrono::steady_clock::time_point taken;
  int count;
  std::array<Details, kMostShown> shown;
};
thread_local constinit Listing listing = {};

// Only a device of this network namespace counts: /sys may show another one's.
bool IsWireless(const Link& link) {
  const std::string folder = Joined("/sys/class/net/", link.name);
  if (access(Joined(folder, "/phy80211").c_str(), F_OK) != 0) return false;
  std::string text;
  if (ReadSmallFile(Joined(folder, "/ifindex").c_str(), 32, text) != ReadResult::Read) return false;
  int index = 0;
  std::from_chars(text.data(), text.data() + text.size(), index);
  return index == link.index;
}

Details DetailsOf(const Interface& interface) {
  Details details = {};
  const Link& link = interface.link;
  link.name.copy(details.name, sizeof details.name - 1);
  if (interface.addressRank >= 0)
    AddressText(interface.address).copy(details.address, sizeof details.address - 1);
  details.type = TypeOf(link, link.kind.empty() && IsWireless(link));
  return details;
}

bool Read(std::vector<Interface>& interfaces, SourceScope& scope) {
  std::string reason;
  if (ReadInterfaces(interfaces, reason)) return true;
  scope.Failed("%s", reason.c_str());
  SetError(Error::Netlink);
  return false;
}

// Lists those that are `fit`, `most` at most.
void List(const std::vector<Interface>& interfaces, bool (*fit)(const Link&, bool), int most) {
  for (const Interface& interface : interfaces) {
    if (listing.count == most) return;
    if (!fit(interface.link, interface.hasAddress)) continue;
    listing.shown[static_cast<std::size_t>(listing.count++)] = DetailsOf(interface);
  }
}

const Details* InListing(const char* name) {
  if (std::chrono::steady_clock::now() - listing.taken > kListingFresh) return nullptr;
  const auto end = listing.shown.begin() + listing.count;
  const auto found = std::find_if(listing.shown.begin(), end, [name](const Details& details) {
    return std::strcmp(details.name, name) == 0;
  });
  return found == end ? nullptr : &*found;
}

// The details of any interface, shown or not.
bool Find(const char* name, SourceScope& scope, Details& details) {
  if (name == nullptr) return SetError(Error::BadArgument), false;
  if (const Details* known = InListing(name)) {
    details = *known;
    return true;
  }
  std::vector<Interface> interfaces;
  if (!Read(interfaces, scope)) return false;
  const auto found = std::ranges::find(interfaces, std::string_view(name),
                                       [](const Interface& each) { return each.link.name; });
  if (found == interfaces.end()) return SetError(Error::NoSuchInterface), false;
  details = DetailsOf(*found);
  return true;
}

}  // namespace

int VLIBNetGetInterfaceInfo(VLIB_NET_INTERFACE* entries, int count, int) {
  SourceScope scope(Source::Network);
  listing.count = 0;
  if (entries == nullptr || count < 0) return SetError(Error::BadArgument), -1;
  std::vector<Interface> interfaces;
  if (!Read(interfaces, scope)) return -1;

  const int most = std::min(count, kMostShown);
  List(interfaces, IsShown, most);
  if (listing.count == 0) List(interfaces, IsContainersOwn, most);
  for (std::size_t place = 0; place < static_cast<std::size_t>(listing.count); ++place) {
    entries[place] = {};
    std::memcpy(entries[place].name, listing.shown[place].name, sizeof(Details::name));
  }
  listing.taken = std::chrono::steady_clock::now();
  return listing.count;
}

int VELANetIFGetInfoEx(const char* name, int, VELA_NETIF_INFO* record) {
  SourceScope scope(Source::Network);
  if (record == nullptr) return SetError(Error::BadArgument), -1;
  Details details;
  if (!Find(name, scope, details)) return -1;
  static_assert(sizeof record->address == sizeof details.address);
  std::memcpy(record->address, details.address, sizeof details.address);
  return 0;
}

namespace vela::network {

int GetIfType(const char* name, void*) {
  SourceScope scope(Source::Network);
  Details details;
  return Find(name, scope, details) ? details.type : -1;
}

const char* GetTypeString(int type) { return TypeText(type); }

}  // namespace vela::network
