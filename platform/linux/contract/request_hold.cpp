// One look at the machine for all that the host asks about it.
#include "platform/status/request_hold.h"

#include <optional>

#include "platform/linux/contract/request.h"

namespace {

thread_local std::optional<linux_platform::RequestScope> held;

}  // namespace

void VELAPlatformHoldRequest() { held.emplace(); }
void VELAPlatformReleaseRequest() { held.reset(); }
