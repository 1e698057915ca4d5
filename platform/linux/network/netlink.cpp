// rtnetlink dumps, taken apart with libnl. Not getifaddrs: glibc ends the process when
// another thread happens to close its socket. The socket is our own: libnl's costs five
// system calls more than the two dumps, and its caches an object for every link.
#include "platform/linux/network/netlink.h"

#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <netlink/attr.h>
#include <netlink/msg.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "platform/linux/base/descriptor.h"

namespace linux_platform {
namespace {

using Interfaces = std::vector<Interface>;

constexpr int kAttempts = 3;  // the kernel says so when the list changed under a dump

std::string ParseKind(const nlattr* nest) {
  const nlattr* kind =
      nla_find(static_cast<const nlattr*>(nla_data(nest)), nla_len(nest), IFLA_INFO_KIND);
  return kind != nullptr ? nla_get_string(kind) : "";
}

Link ParseLink(nlmsghdr* header) {
  const auto* info = static_cast<const ifinfomsg*>(nlmsg_data(header));
  Link link;
  link.index = info->ifi_index;
  link.flags = info->ifi_flags;
  link.hardware = info->ifi_type;
  nlattr* each = nullptr;
  int left = 0;
  nlmsg_for_each_attr(each, header, sizeof *info, left) {
    const int type = nla_type(each);
    if (type == IFLA_IFNAME) link.name = nla_get_string(each);
    if (type == IFLA_MASTER) link.master = static_cast<int>(nla_get_u32(each));
    if (type == IFLA_LINKINFO) link.kind = ParseKind(each);
  }
  return link;
}

Address ParseAddress(nlmsghdr* header) {
  const auto* info = static_cast<const ifaddrmsg*>(nlmsg_data(header));
  Address address;
  address.index = static_cast<int>(info->ifa_index);
  address.family = info->ifa_family;
  address.scope = info->ifa_scope;
  address.flags = info->ifa_flags;
  // On a point-to-point link IFA_ADDRESS is the peer's.
  const nlattr *own = nullptr, *peer = nullptr;
  nlattr* each = nullptr;
  int left = 0;
  nlmsg_for_each_attr(each, header, sizeof *info, left) {
    const int type = nla_type(each);
    if (type == IFA_FLAGS) address.flags = nla_get_u32(each);
    if (type == IFA_LOCAL) own = each;
    if (type == IFA_ADDRESS) peer = each;
  }
  const nlattr* bytes = own != nullptr ? own : peer;
  if (bytes == nullptr) return Address();
  const auto size = static_cast<std::size_t>(nla_len(bytes));
  std::memcpy(address.bytes, nla_data(bytes), std::min(sizeof address.bytes, size));
  return address;
}

void AddLink(Interfaces& interfaces, nlmsghdr* header) {
  if (header->nlmsg_type == RTM_NEWLINK) interfaces.emplace_back().link = ParseLink(header);
}

void AddAddress(Interfaces& interfaces, nlmsghdr* header) {
  if (header->nlmsg_type != RTM_NEWADDR) return;
  const Address address = ParseAddress(header);
  const auto index = [](const Interface& each) { return each.link.index; };
  const auto owner = std::ranges::lower_bound(interfaces, address.index, {}, index);
  if (owner == interfaces.end() || owner->link.index != address.index) return;
  const int rank = RankAddress(address);
  owner->hasAddress = true;
  if (rank < 0 || (owner->addressRank >= 0 && rank >= owner->addressRank)) return;
  owner->address = address;
  owner->addressRank = rank;
}

using AddRecord = void (*)(Interfaces&, nlmsghdr*);

// Sends the request for every record of `type`: the same bytes serve both dumps, since
// only the first byte of either header, the family, is looked at.
bool SendRequest(int socket, std::uint16_t type, std::uint32_t sequence) {
  struct {
    nlmsghdr message;
    ifinfomsg header;
    nlattr attribute;
    std::uint32_t mask;
  } request = {};
  request.message.nlmsg_len =
      type == RTM_GETLINK ? sizeof request : NLMSG_LENGTH(sizeof(ifaddrmsg));
  request.message.nlmsg_type = type;
  request.message.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  request.message.nlmsg_seq = sequence;
  request.attribute = {sizeof request.attribute + sizeof request.mask, IFLA_EXT_MASK};
  request.mask = RTEXT_FILTER_SKIP_STATS;
  return send(socket, &request, request.message.nlmsg_len, MSG_NOSIGNAL) >= 0;
}

enum class Part { More, Done, Failed };

// Hands the records of one received part to `addRecord`. Failed: errno tells.
Part ReadPart(char* buffer, int size, std::uint32_t sequence, bool& interrupted,
              Interfaces& interfaces, AddRecord addRecord) {
  auto* header = reinterpret_cast<nlmsghdr*>(buffer);
  for (; nlmsg_ok(header, size); header = nlmsg_next(header, &size)) {
    if (header->nlmsg_seq != sequence) continue;
    interrupted = interrupted || (header->nlmsg_flags & NLM_F_DUMP_INTR) != 0;
    if (header->nlmsg_type == NLMSG_DONE) return Part::Done;
    if (header->nlmsg_type == NLMSG_ERROR) {
      errno = -static_cast<const nlmsgerr*>(nlmsg_data(header))->error;
      return Part::Failed;
    }
    addRecord(interfaces, header);
  }
  return Part::More;
}

// Asks for every record of `type` and hands each to `addRecord`. False: errno tells.
bool RunDump(int socket, std::uint16_t type, bool& interrupted, Interfaces& interfaces,
             AddRecord addRecord) {
  // As large as the kernel's largest part of a dump.
  alignas(nlmsghdr) std::array<char, std::size_t{32} << 10> buffer;
  const std::uint32_t sequence = type;
  if (!SendRequest(socket, type, sequence)) return false;
  for (;;) {
    const ssize_t got = recv(socket, buffer.data(), buffer.size(), 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    const Part part = ReadPart(buffer.data(), static_cast<int>(got), sequence, interrupted,
                               interfaces, addRecord);
    if (part != Part::More) return part == Part::Done;
  }
}

bool ReadOnce(int socket, bool& interrupted, Interfaces& interfaces) {
  interrupted = false;
  interfaces.clear();
  if (!RunDump(socket, RTM_GETLINK, interrupted, interfaces, AddLink)) return false;
  // The kernel goes through a hash table.
  std::ranges::sort(interfaces, {}, [](const Interface& each) { return each.link.index; });
  return RunDump(socket, RTM_GETADDR, interrupted, interfaces, AddAddress);
}

}  // namespace

bool ReadInterfaces(Interfaces& interfaces, std::string& reason) {
  const Descriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
  bool read = static_cast<bool>(socket), interrupted = true;
  // A list that keeps changing is, in the end, still the best there is.
  for (int attempt = 0; read && interrupted && attempt < kAttempts; ++attempt)
    read = ReadOnce(socket.Get(), interrupted, interfaces);
  if (!read)
    reason = std::string("the kernel did not list the network interfaces: ") + std::strerror(errno);
  return read;
}

}  // namespace linux_platform
