#include "platform/linux/services/pacemaker.h"

#include <unistd.h>

#include <string_view>

#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"
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

struct Unit {
  const char* name;
  bool isEnabled = false;
  std::string active;  // as in UnitState; "" when nobody tells

  bool Runs() const { return active == "active"; }
};

void ReadActive(Unit& pacemaker, Unit& corosync, TimeBudget& budget) {
  std::vector<std::string> names = {pacemaker.name};
  if (corosync.isEnabled) names.emplace_back(corosync.name);
  std::vector<UnitState> states;
  std::string reason;
  if (ReadUnits(names, budget, states, reason) == UnitsAnswer::Read) {
    pacemaker.active = states.front().active;
    corosync.active = states.back().active;
  } else if (PacemakerListens()) {
    pacemaker.active = corosync.active = "active";
  }
}

Trouble DescribeIdle(const Unit& unit) {
  const std::string state = unit.active.empty() ? "it does not listen" : unit.active;
  return {std::string(unit.name) + " is enabled and not active (" + state +
              "): this machine has no part in its cluster",
          "systemctl start corosync pacemaker; systemctl disable corosync pacemaker, if there "
          "is to be no cluster"};
}

bool ConfiguresDrbd() {
  for (const std::string& name : NamesIn(BelowRoot("/etc/drbd.d")))
    if (name.ends_with(".res")) return true;
  return false;
}

}  // namespace

ClusterServices ReadClusterServices(TimeBudget& budget) {
  ClusterServices services = {false, Access(BelowRoot(kDrbd), F_OK), {}};
  const bool hasMonitor = Access(BelowRoot(kClusterMonitor), X_OK);
  // Corosync's folder comes with it, also beneath Pacemaker, and stays when it is uninstalled.
  const bool mayBeEnabled = PathExists(BelowRoot("/etc/corosync"));
  Unit pacemaker = {"pacemaker.service", mayBeEnabled && IsEnabled("pacemaker.service"), {}};
  Unit corosync = {"corosync.service", mayBeEnabled && IsEnabled("corosync.service"), {}};
  if (hasMonitor || pacemaker.isEnabled || corosync.isEnabled)
    ReadActive(pacemaker, corosync, budget);
  services.pacemaker = hasMonitor && pacemaker.Runs();
  if (pacemaker.isEnabled && !pacemaker.Runs())
    services.idle = DescribeIdle(pacemaker);
  else if (corosync.isEnabled && !corosync.Runs())
    services.idle = DescribeIdle(corosync);
  else if (pacemaker.Runs() && !hasMonitor)
    services.idle = {std::string(kClusterMonitor) + ", which tells how the cluster is, is missing",
                     "apt-get install pacemaker-cli-utils"};
  else if (!services.drbd && !pacemaker.Runs() && ConfiguresDrbd())
    services.idle = {"/etc/drbd.d has resources, and DRBD does not run", "drbdadm up all"};
  return services;
}

}  // namespace linux_platform
