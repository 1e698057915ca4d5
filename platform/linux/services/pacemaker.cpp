#include "platform/linux/services/pacemaker.h"

#include <unistd.h>

#include <string_view>

#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"
#include "platform/linux/services/systemd_units.h"

namespace linux_platform {

constexpr std::size_t kSocketsCap = std::size_t{4} << 20;

std::vector<std::string> BuildClusterCommand() {
  return {kClusterMonitor, "-1", "--output-as=xml"};
}

// The name that its first process listens on; the name's NULs show as "@".
bool PacemakerListens() {
  std::string text;
  ReadSmallFile(BelowRoot("/proc/net/unix").c_str(), kSocketsCap, text);
  constexpr std::string_view kName = " @pacemakerd";
  for (std::size_t at = text.find(kName); at != std::string::npos; at = text.find(kName, at + 1)) {
    const std::size_t end = at + kName.size();
    if (end == text.size() || text[end] == '@' || text[end] == '\n') return true;
  }
  return false;
}

namespace {

bool PacemakerRuns(TimeBudget& budget) {
  if (!Access(BelowRoot(kClusterMonitor), X_OK)) return false;
  std::vector<UnitState> states;
  std::string reason;
  if (ReadUnits({"pacemaker.service"}, budget, states, reason) == UnitsAnswer::Read)
    return states[0].active == "active";
  return PacemakerListens();
}

}  // namespace

ClusterServices ReadClusterServices(TimeBudget& budget) {
  return {PacemakerRuns(budget), Access(BelowRoot(kDrbd), F_OK)};
}

}  // namespace linux_platform
