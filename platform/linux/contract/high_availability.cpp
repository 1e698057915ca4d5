// High availability: the cluster manager Pacemaker, and DRBD's mirror of the disks.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>

#include "platform/linux/base/deadline.h"
#include "platform/linux/base/log_once.h"
#include "platform/linux/base/open.h"
#include "platform/linux/base/program.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/contract/error.h"
#include "platform/linux/contract/request.h"
#include "platform/linux/services/cluster_snapshot.h"
#include "platform/linux/services/ha_state.h"
#include "platform/status/source_status.h"
#include "velac.h"

using namespace linux_platform;
using source_status::Source, source_status::SourceScope;

namespace {

constexpr Bounds kMonitorBounds = {std::chrono::seconds(2), std::size_t{1} << 20};
constexpr std::size_t kDrbdCap = std::size_t{256} << 10;

constinit LogOnce failures("high availability", "crm_mon -1");
constinit CircuitBreaker monitorBreaker;

// Pacemaker answers root and its group, whose members alone may enter this folder.
bool MayAskCluster() {
  return Access(BelowRoot("/var/lib/pacemaker/cib"), X_OK) || errno != EACCES;
}

std::optional<ClusterReport> ReadCollectedState(SourceScope& scope, Trouble& trouble) {
  Json::Value document;
  std::string reason;
  const SnapshotState snapshot = ReadSnapshot(ClusterSnapshot::kSource, document, reason);
  trouble = snapshot == SnapshotState::Absent ? MissCollector("only root may ask Pacemaker")
                                              : ToTrouble(snapshot, std::move(reason));
  if (snapshot != SnapshotState::Read) return std::nullopt;
  std::optional<ClusterReport> report = ClusterSnapshot::FromJson(document).report;
  if (report)
    scope.Read("%s", SeenByCollector(document).c_str());
  else
    trouble = "cluster.json has no state of the cluster";
  return report;
}

std::optional<ClusterReport> AskCluster(Request& request, std::string& reason) {
  if (monitorBreaker.IsOpen(reason)) return std::nullopt;
  std::string xml;
  int status = 0;
  const ProgramEnd end = RunProgram(BuildClusterCommand(), kMonitorBounds, request.GetTimeBudget(),
                                    xml, status, reason);
  if (end == ProgramEnd::Late) monitorBreaker.Trip(reason);
  if (end != ProgramEnd::Exited) return std::nullopt;
  return ParseClusterState(xml, reason);  // which tells a failure better than the exit status
}

std::optional<HaState> ReadClusterState(Request& request, SourceScope& scope, Trouble& trouble) {
  std::optional<ClusterReport> report =
      MayAskCluster() ? AskCluster(request, trouble.reason) : ReadCollectedState(scope, trouble);
  if (!report) return std::nullopt;
  request.GetLearned().cluster = *std::move(report);
  return request.GetLearned().cluster.state;
}

std::optional<HaState> ReadDrbdState(Request& request, Trouble& trouble) {
  std::string text;
  bool isVersion8 = false;
  if (ReadSmallFile(BelowRoot(kDrbd).c_str(), kDrbdCap, text) != ReadResult::Read) {
    trouble = std::string(kDrbd) + " could not be read";
    return std::nullopt;
  }
  const bool pacemakerRuns = request.GetClusterServices().pacemaker;
  const std::optional<HaState> state =
      ParseDrbdState(text, isVersion8, request.GetLearned().mirrors);
  if (!isVersion8 && pacemakerRuns) return HaState::Normal;  // which watches it
  if (!isVersion8) {
    trouble = {
        "DRBD 9 and later do not tell their state in /proc/drbd",
        "drbdadm status; accept=\"high-availability\" in /etc/velainfo.conf, if it is watched "
        "otherwise"};
    return std::nullopt;
  }
  return state.value_or(HaState::Normal);
}

// The worse of both. A part that could not be asked leaves the other's trouble standing, but
// never makes the whole "normal".
std::optional<HaState> ReadOverview(Request& request, SourceScope& scope, Trouble& trouble) {
  const ClusterServices& running = request.GetClusterServices();
  request.GetLearned().mirrors.clear();
  std::optional<HaState> cluster = HaState::Normal, drbd = HaState::Normal;
  Trouble drbdTrouble;
  if (running.pacemaker) cluster = ReadClusterState(request, scope, trouble);
  if (running.drbd) drbd = ReadDrbdState(request, drbdTrouble);
  if (!running.idle.IsNone()) cluster.reset();
  if (trouble.IsNone()) trouble = running.idle;
  if (trouble.IsNone()) trouble = drbdTrouble;
  if (cluster && drbd) return std::max(*cluster, *drbd);
  const HaState known = cluster ? *cluster : drbd.value_or(HaState::Normal);
  return known == HaState::Normal ? std::nullopt : std::optional(known);
}

}  // namespace

int VELAHAIsRunning(void) {
  SourceScope scope(Source::HighAvailability);
  const RequestScope request;
  const ClusterServices& running = request->GetClusterServices();
  if (running.pacemaker || running.drbd) return 1;
  failures.Report(scope, running.idle);
  if (running.idle.IsNone()) scope.Absent("neither Pacemaker nor DRBD runs here");
  return 0;
}

int VELAHAGetOverviewStatusDL(char* buffer, int size) {
  SourceScope scope(Source::HighAvailability);
  if (buffer == nullptr || size <= 0) return SetError(Error::BadArgument);
  buffer[0] = '\0';
  const RequestScope request;
  const ClusterServices& running = request->GetClusterServices();
  if (!running.pacemaker && !running.drbd) {
    scope.Absent("neither Pacemaker nor DRBD runs here");
    return -1;
  }
  Trouble trouble;
  const std::optional<HaState> state = ReadOverview(*request, scope, trouble);
  failures.Report(scope, trouble);
  if (!state) return SetError(Error::SourceFailed);
  const char* text = NameHaState(*state);
  if (std::strlen(text) >= static_cast<std::size_t>(size)) return SetError(Error::TooLong);
  std::strcpy(buffer, text);
  return 0;
}
