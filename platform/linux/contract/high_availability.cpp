// High availability: the cluster manager Pacemaker, and DRBD's mirror of the disks.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>

#include "common/json_reader.h"
#include "platform/linux/base/deadline.h"
#include "platform/linux/base/log_once.h"
#include "platform/linux/base/program.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/contract/error.h"
#include "platform/linux/services/ha_state.h"
#include "platform/linux/services/pacemaker.h"
#include "platform/linux/services/systemd_units.h"
#include "platform/status/source_status.h"
#include "velac.h"

using namespace linux_platform;
using common::TextMember;
using source_status::Source, source_status::SourceScope;

namespace {

constexpr const char* kDrbd = "/proc/drbd";
constexpr Bounds kMonitorBounds = {std::chrono::seconds(2), std::size_t{1} << 20};
constexpr std::size_t kDrbdCap = std::size_t{256} << 10;
constexpr auto kFresh = std::chrono::milliseconds(500);

constinit FailureLog failures("high availability");
constinit CircuitBreaker monitorBreaker;

// What runs here, kept for the question that follows at once in the same thread.
struct Running {
  std::chrono::steady_clock::time_point taken;
  bool pacemaker, drbd;
};
thread_local constinit Running running = {};

// systemd knows; where it does not run, or cannot be asked, Pacemaker's own socket tells.
bool PacemakerRuns() {
  if (access(BelowRoot(kClusterMonitor).c_str(), X_OK) != 0) return false;
  std::vector<UnitState> states;
  std::string reason;
  if (ReadUnits({"pacemaker.service"}, states, reason) == UnitsAnswer::Read)
    return states[0].active == "active";
  return PacemakerListens();
}

void LookAfresh() {
  running.pacemaker = PacemakerRuns();
  running.drbd = access(BelowRoot(kDrbd).c_str(), F_OK) == 0;
  running.taken = std::chrono::steady_clock::now();
}

// Pacemaker answers root and its group, whose members alone may enter this folder.
bool MayAskCluster() {
  return access(BelowRoot("/var/lib/pacemaker/cib").c_str(), X_OK) == 0 || errno != EACCES;
}

std::optional<HaState> AskCollector(SourceScope& scope, std::string& reason) {
  Json::Value seen;
  switch (ReadSnapshot("cluster", seen, reason)) {
    case SnapshotState::Absent:
      reason = std::string("only root may ask Pacemaker. ") + kStartCollector;
      return std::nullopt;
    case SnapshotState::Failed:
      return std::nullopt;
    case SnapshotState::Read:
      break;
  }
  const std::optional<HaState> state = HaStateNamed(TextMember(seen, "state"));
  if (state)
    scope.Read("%s", SeenByCollector(seen).c_str());
  else
    reason = "cluster.json has no state of the cluster";
  return state;
}

std::optional<HaState> AskCluster(SourceScope& scope, std::string& reason) {
  if (!MayAskCluster()) return AskCollector(scope, reason);
  if (monitorBreaker.IsOpen(reason)) return std::nullopt;
  std::string xml;
  int status = 0;
  const ProgramEnd end = RunProgram(ClusterQuestion(), kMonitorBounds, xml, status, reason);
  if (end == ProgramEnd::Late) monitorBreaker.Trip(reason);
  if (end != ProgramEnd::Exited) return std::nullopt;
  return ClusterState(xml, reason);  // which tells a failure better than the exit status
}

std::optional<HaState> AskDrbd(std::string& reason) {
  std::string text;
  bool isVersion8 = false;
  if (ReadSmallFile(BelowRoot(kDrbd).c_str(), kDrbdCap, text) != ReadResult::Read) {
    reason = std::string(kDrbd) + " could not be read";
    return std::nullopt;
  }
  const std::optional<HaState> state = DrbdState(text, isVersion8);
  if (!isVersion8 && running.pacemaker) return HaState::Normal;  // which watches it
  if (!isVersion8) {
    reason = "DRBD 9 and later do not tell their state in /proc/drbd";
    return std::nullopt;
  }
  return state.value_or(HaState::Normal);
}

// The worse of both. A part that could not be asked leaves the other's trouble standing, but
// never makes the whole "normal".
std::optional<HaState> Overview(SourceScope& scope, std::string& reason) {
  std::optional<HaState> cluster = HaState::Normal, drbd = HaState::Normal;
  std::string drbdReason;
  if (running.pacemaker) cluster = AskCluster(scope, reason);
  if (running.drbd) drbd = AskDrbd(drbdReason);
  if (reason.empty()) reason = drbdReason;
  if (cluster && drbd) return std::max(*cluster, *drbd);
  const HaState known = cluster ? *cluster : drbd.value_or(HaState::Normal);
  return known == HaState::Normal ? std::nullopt : std::optional(known);
}

}  // namespace

int VELAHAIsRunning(void) {
  SourceScope scope(Source::HighAvailability);
  LookAfresh();
  if (running.pacemaker || running.drbd) return 1;
  scope.Absent("neither Pacemaker nor DRBD runs here");
  return failures.Fine(), 0;
}

int VELAHAGetOverviewStatusDL(char* buffer, int size) {
  SourceScope scope(Source::HighAvailability);
  if (buffer == nullptr || size <= 0) return SetError(Error::BadArgument), -1;
  buffer[0] = '\0';
  if (std::chrono::steady_clock::now() - running.taken > kFresh) LookAfresh();
  if (!running.pacemaker && !running.drbd) {
    scope.Absent("neither Pacemaker nor DRBD runs here");
    return -1;
  }
  std::string reason;
  const std::optional<HaState> state = Overview(scope, reason);
  if (reason.empty())
    failures.Fine();
  else
    failures.Failed(scope, reason);
  if (!state) return SetError(Error::SourceFailed), -1;
  const char* text = HaText(*state);
  if (std::strlen(text) >= static_cast<std::size_t>(size)) return SetError(Error::TooLong), -1;
  std::strcpy(buffer, text);
  return 0;
}
