// Whether the clock follows anybody, where its owner wants it to.
#include <sys/timex.h>

#include <algorithm>
#include <array>

#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/notes/notes.h"
#include "platform/linux/notes/tell.h"

namespace linux_platform {
namespace {

// The links that "systemctl enable" makes for the time services; of one that was removed it leads
// nowhere.
constexpr auto kEnabled = std::to_array<const char*>(
    {"sysinit.target.wants/systemd-timesyncd.service", "multi-user.target.wants/chrony.service",
     "multi-user.target.wants/ntpsec.service", "multi-user.target.wants/ntp.service",
     "multi-user.target.wants/openntpd.service"});

// As timedatectl has it: the kernel allows for so much once nobody has told it the time for nine
// hours. The flag alone says nothing of a chrony that leaves the hardware clock alone.
constexpr long kLost = 16'000'000;

// In a container the clock is its host's matter.
bool IsOurs() {
  return PathExists(BelowRoot("/run/systemd/system")) &&
         !PathExists(BelowRoot("/run/systemd/container"));
}

bool IsServiceEnabled() {
  return std::ranges::any_of(kEnabled, [](const char* link) {
    return PathExists(BelowRoot("/etc/systemd/system/", link));
  });
}

// "24078.84 8585.21": since the machine started, and idle.
bool HasStartedLongAgo() {
  constexpr std::int64_t kFirstTries = 600;
  const std::string uptime = Attribute(BelowRoot("/proc/uptime"));
  return ToNumber(uptime.substr(0, uptime.find('.'))).value_or(0) >= kFirstTries;
}

}  // namespace

KernelClock ReadKernelClock() {
  timex clock = {};
  if (adjtimex(&clock) < 0) return {};
  return {(clock.status & STA_UNSYNC) != 0, clock.maxerror};
}

void TellClock(const KernelClock& clock) {
  if (!clock.unsynchronised || clock.maxError < kLost) return;
  if (IsOurs() && IsServiceEnabled() && HasStartedLongAgo()) Tell(kClockAdrift, "", "");
}

}  // namespace linux_platform
