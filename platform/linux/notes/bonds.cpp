// Network bonds: several links as one, which goes on without a word when one of them is gone.
#include "platform/linux/base/settings.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/notes/notes.h"
#include "platform/linux/notes/tell.h"

namespace linux_platform {
namespace {

std::string Net(std::string_view interface, std::string_view attribute) {
  return Attribute(Sys("/class/net/", interface, "/", attribute));
}

// A bond that nobody switched on has not lost anything. "0x1443": the lowest bit says so.
bool IsOn(std::string_view bond) {
  const std::string flags = Net(bond, "flags");
  constexpr std::string_view kOdd = "13579bdf";
  return !flags.empty() && kOdd.find(flags.back()) != kOdd.npos;
}

// The bond looks after its links only where it was told how often to; their own state is known
// always.
bool IsDown(std::string_view leg) {
  const std::string state = Net(leg, "operstate");
  return Net(leg, "bonding_slave/mii_status") == "down" || state == "down" ||
         state == "lowerlayerdown";
}

}  // namespace

void TellBondLegs() {
  const std::string bonds = Attribute(Sys("/class/net/bonding_masters"));
  for (const std::string_view bond : SplitList(bonds)) {
    if (!IsOn(bond)) continue;
    const std::string legs = Net(bond, "bonding/slaves");
    for (const std::string_view leg : SplitList(legs))
      if (IsDown(leg)) Tell(kBondLegDown, Concatenate(bond, ": ", leg), bond);
  }
}

}  // namespace linux_platform
