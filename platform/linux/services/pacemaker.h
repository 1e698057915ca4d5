// Whether Pacemaker runs here, and how its state is asked for: by a request, and by the
// collector.
#pragma once

#include <string>
#include <vector>

namespace linux_platform {

constexpr const char* kClusterMonitor = "/usr/sbin/crm_mon";

// The monitor and what makes it print the cluster as XML, not below the root.
std::vector<std::string> ClusterQuestion();

// Pacemaker's own listening socket, which everybody sees.
bool PacemakerListens();

}  // namespace linux_platform
