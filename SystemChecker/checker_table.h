// The checkers in the order in which they run.
#pragma once

#include <iterator>

#include "SystemChecker/checkers.h"
#include "SystemChecker/findings.h"

namespace VELA::SystemHealth {

using Checker = std::optional<CheckerRule> (*)(const SystemInfoHandler&);

// In the order of Check, which decides between findings of the same priority.
inline constexpr Checker kCheckers[] = {
    VolumeUsageChecker,             // internal volumes short of space or inodes
    ExternalVolumeChecker,          // USB, SD-card and eSATA volumes short of space
    DiskStatusChecker,              // crashed and disconnected disks
    StorageManagerOverviewChecker,  // the storage manager's overall verdict
    UpsStatusChecker,               // on battery, battery low
    EnclosureStatusChecker,         // reports nothing
    SystemStatusChecker,            // fans, supplies, temperature, services, system volume
    EboxStatusChecker,              // fans and supplies of expansion units
    HAStatusChecker,                // a cluster in trouble
    SANStatusChecker,               // crashed LUNs, LUNs running out of space
};
static_assert(std::size(kCheckers) == kChecks.size(), "a checker has no row in findings.h");

}  // namespace VELA::SystemHealth
