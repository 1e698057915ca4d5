// Whether Pacemaker runs here, and how its state is asked for: by a request, and by the
// collector.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/base/deadline.h"
#include "platform/linux/base/trouble.h"

namespace linux_platform {

constexpr const char* kClusterMonitor = "/usr/sbin/crm_mon";

// The monitor and what makes it print the cluster as XML, not below the root.
std::vector<std::string> BuildClusterCommand();

// Pacemaker's own listening socket, which everybody sees.
bool PacemakerListens();

struct ClusterServices {
  bool pacemaker = false, drbd = false;
  Trouble idle;  // what is configured here, and does not run
};
constexpr const char* kDrbd = "/proc/drbd";

// What runs here, and what is set up to run and does not. systemd knows; where it does not run, or
// cannot be asked within `budget`, Pacemaker's socket tells.
ClusterServices ReadClusterServices(TimeBudget& budget);

}  // namespace linux_platform
