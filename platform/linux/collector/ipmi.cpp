// The management controller's sensors. They are read by a program: a controller that does
// not answer holds its reader for as long as it likes.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "platform/linux/base/root.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/collector/children.h"
#include "platform/linux/collector/ipmi_sensors.h"
#include "platform/linux/collector/parts.h"

namespace linux_platform {
namespace {

constexpr const char* kProgram = "/usr/sbin/ipmi-sensors";
constexpr std::array kNodes = {"/dev/ipmi0", "/dev/ipmi/0", "/dev/ipmidev/0"};
// The first look reads the controller's list of sensors, which is slow, and keeps it.
constexpr Bounds kBounds = {std::chrono::seconds(22), std::size_t{1} << 20};

bool Exists(const char* path, int mode) { return access(BelowRoot(path).c_str(), mode) == 0; }

std::vector<std::string> Arguments() {
  const std::string cache = BelowRoot(kSnapshotFolder) + "/.sensors-of-ipmi";
  mkdir(cache.c_str(), 0700);
  return {BelowRoot(kProgram),
          "--driver-type=OPENIPMI",
          "--sensor-types=Temperature,Fan,Power_Supply",
          "--comma-separated-output",
          "--no-header-output",
          "--output-sensor-state",
          "--quiet-cache",
          "--sdr-cache-recreate",
          "--sdr-cache-directory=" + cache};
}

}  // namespace

Json::Value CollectIpmi() {
  const auto exists = [](const char* node) { return Exists(node, F_OK); };
  if (std::ranges::none_of(kNodes, exists) || !Exists(kProgram, X_OK)) return {};
  const Outcome outcome = RunTogether({{Arguments(), kBounds}}).front();
  if (!outcome.reason.empty()) return Unread(outcome.reason);
  if (outcome.cut == Child::Cut::Late) return Unread("the controller gave no answer within 22 s");
  if (outcome.cut == Child::Cut::Long) return Unread("ipmi-sensors printed more than 1 MiB");
  if (outcome.status != 0)
    return Unread("ipmi-sensors failed; run ipmi-sensors --driver-type=OPENIPMI to see why");
  return ParseIpmiSensors(outcome.output);
}

}  // namespace linux_platform
