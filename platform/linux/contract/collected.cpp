// When the collector last looked, for the host.
#include "platform/status/collected.h"

#include "platform/linux/base/snapshot.h"

std::int64_t VELAPlatformSnapshotTime() { return linux_platform::FindSnapshotTime(); }
