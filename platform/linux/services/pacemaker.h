// Whether Pacemaker runs here, and how its state is asked for: by a request, and by the
// collector.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/base/deadline.h"

namespace linux_platform {

constexpr const char* kClusterMonitor = "/usr/sbin/crm_mon";

// The monitor and what makes it print the cluster as XML, not below the root.
std::vector<std::string> BuildClusterCommand();

// Pacemaker's own listening socket, which everybody sees.
bool PacemakerListens();

struct ClusterServices {
  bool pacemaker = false, drbd = false;
};
constexpr const char* kDrbd = "/proc/drbd";

// What runs here. systemd knows of Pacemaker; where it does not run, or cannot be asked
// within `budget`, its socket tells.
ClusterServices ReadClusterServices(TimeBudget& budget);

}  // namespace linux_platform
