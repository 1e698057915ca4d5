#include <string>

#include "common/text.h"
#include "platform/linux/evidence/cause.h"

namespace linux_platform {
namespace {

constexpr const char *kMonitor = "crm_mon -1", *kMirrors = "drbdadm status";

// What mends it, where a command can without losing anything.
std::string ChooseMend(const ClusterCause& cause) {
  if (cause.what == "resource_failed")
    return WriteCommand("crm_resource --cleanup --resource {}", {cause.name});
  if (cause.what == "node_resting" && cause.detail == "standby")
    return WriteCommand("crm_standby --delete --node {}", {cause.name});
  if (cause.what == "cluster_maintenance") return "crm_attribute --name maintenance-mode --delete";
  // DRBD refuses by itself to join two halves that differ.
  if (cause.what == "mirror_broken" && cause.detail.starts_with("StandAlone"))
    return "drbdadm connect all";
  return {};
}

}  // namespace

void TellClusterEvidence(const std::vector<ClusterCause>& causes, const TakeEvidence& take) {
  for (const ClusterCause& cause : causes) {
    // Its node is not always told.
    const bool nowhere = cause.what == "resource_failed" && cause.detail.empty();
    const char* key = nowhere ? "resource_failed_nowhere" : cause.what.c_str();
    VELAEvidence record = MakeEvidence(key, kHighAvailability, cause.name);
    common::FillField(record.words, cause.detail);
    SetShow(record, cause.what == "mirror_broken" ? kMirrors : kMonitor);
    SetMend(record, {ChooseMend(cause)});
    take(record);
  }
}

}  // namespace linux_platform
