// How the cluster is doing. Pacemaker answers root and the group haclient, which may also
// change the cluster; the health service is neither.
#include <unistd.h>

#include "platform/linux/base/root.h"
#include "platform/linux/collector/children.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/services/ha_state.h"
#include "platform/linux/services/pacemaker.h"

namespace linux_platform {

constexpr Bounds kBounds = {std::chrono::seconds(8), std::size_t{1} << 20};

Json::Value CollectCluster() {
  std::vector<std::string> question = ClusterQuestion();
  question[0] = BelowRoot(question[0]);
  if (access(question[0].c_str(), X_OK) != 0 || !PacemakerListens()) return {};
  const Outcome outcome = RunTogether({{question, kBounds}}).front();
  if (!outcome.reason.empty()) return Unread(outcome.reason);
  if (outcome.cut == Child::Cut::Late) return Unread("crm_mon did not finish within 8 s");
  std::string reason;
  const auto state = ClusterState(outcome.output, reason);
  if (!state) return Unread(reason);
  Json::Value members(Json::objectValue);
  members["state"] = HaText(*state);
  return members;
}

}  // namespace linux_platform
