// The state of systemd's units, asked over the system bus.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/base/deadline.h"
#include "platform/linux/base/sysfs.h"

namespace linux_platform {

struct UnitState {
  std::string load;    // "loaded", "not-found", ...
  std::string active;  // "active", "inactive", "failed", ...
  std::string reload;  // of a service: "success", or how its last reload failed; may be empty
};

enum class UnitsAnswer {
  Read,
  NoSystemd,  // it does not run this machine, or the platform was built without sd-bus
  Failed,     // no bus, or not the answer that was asked for
  Late,       // no answer in time, now or within the last thirty seconds
};

// Asks for all `names` at once; `states` has their states in the same order. Takes half a
// second of `budget` at most, whatever the bus does. `reason` says what else than Read happened.
UnitsAnswer ReadUnits(const std::vector<std::string>& names, TimeBudget& budget,
                      std::vector<UnitState>& states, std::string& reason);

// When the unit last stopped running, in seconds since 1970; 0: never, or systemd does not tell.
// Takes half a second of `budget` at most.
std::int64_t ReadInactiveSince(const std::string& unit, TimeBudget& budget);

// Whether the unit starts with the machine: systemctl's link in a folder that everybody may read.
// That of a unit whose package is gone leads nowhere, and says as much.
inline bool IsEnabled(std::string_view unit) {
  return !LinkTarget(BelowRoot("/etc/systemd/system/multi-user.target.wants/", unit)).empty();
}

}  // namespace linux_platform
