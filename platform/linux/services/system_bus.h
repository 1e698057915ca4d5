// Questions to systemd over the system bus: sd-bus, without any of its synchronous calls. Their
// time-out does not hold while the connection is being made, so a stopped bus blocks them for 90 s.
// Everything is queued at once and driven under a deadline of our own.
#pragma once

#include <functional>
#include <string>

#include <systemd/sd-bus.h>

#include "platform/linux/base/deadline.h"
#include "platform/linux/services/systemd_units.h"

namespace linux_platform {

constexpr const char* kSystemd = "org.freedesktop.systemd1";

// What is still to come, and what went wrong with what came. Whoever takes an answer keeps it.
struct BusAnswers {
  int awaited = 0;
  std::string error;
};

// `queue` sends the questions, counts them as awaited, and gives sd-bus's result. Takes half a
// second of `budget` at most. `reason` says what else than Read happened.
UnitsAnswer AskSystemd(const std::function<int(sd_bus*)>& queue, const BusAnswers& answers,
                       TimeBudget& budget, std::string& reason);

// No exception may cross sd-bus: a text that finds no memory is left empty.
void AssignText(std::string& to, const char* text);

}  // namespace linux_platform
