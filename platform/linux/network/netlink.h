// The kernel's own list of links and addresses, in the calling thread's network namespace.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/network/interface_choice.h"

namespace linux_platform {

struct Interface {
  Link link;
  Address address;       // the preferred one
  int addressRank = -1;  // its rank (RankAddress); negative: none fit to be shown
  bool hasAddress = false;
};

// Reads every interface, by ascending index: one dump of the links, one of the
// addresses. On failure returns false with the reason in words. Waits for no other process.
bool ReadInterfaces(std::vector<Interface>& interfaces, std::string& reason);

}  // namespace linux_platform
