#include <linux/if.h>

#include <algorithm>
#include <string>

#include "common/text.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/parts/parts.h"

namespace linux_platform {
namespace {

using common::FillField;

// An unplugged port is no fault: nobody says that there should be a cable.
VELAPart MakeInterface(const Interface& interface) {
  const Link& link = interface.link;
  const std::string folder = Sys("/class/net/", link.name);
  VELAPart part;
  part.kind = source_status::PartKind::Interface;
  part.state = (link.flags & IFF_RUNNING) != 0 ? source_status::PartState::Well
                                               : source_status::PartState::Empty;
  FillField(part.name, link.name);
  if (interface.addressRank >= 0) FillField(part.path, FormatAddress(interface.address));
  FillField(part.model, link.kind);
  // Only a device of this network namespace counts: /sys may show another one's.
  if (NumberAttribute(folder + "/ifindex") != link.index) return part;
  if (link.kind.empty())
    FillField(part.model, LastComponent(LinkTarget(folder + "/device/driver")));
  FillField(part.serial, Attribute(folder + "/address"));
  return part;
}

}  // namespace

void TellInterfaceParts(const std::vector<Interface>& interfaces, const TakePart& take) {
  const auto tell = [&](bool (*fit)(const Link&, bool)) {
    bool any = false;
    for (const Interface& interface : interfaces) {
      if (!fit(interface.link, interface.hasAddress)) continue;
      any = true;
      take(MakeInterface(interface));
    }
    return any;
  };
  if (!tell(IsShown)) tell(IsContainersOwn);
}

}  // namespace linux_platform
