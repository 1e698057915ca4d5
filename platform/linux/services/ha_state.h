// How a high-availability pair is doing. Pure functions over what its tools say.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace linux_platform {

// In the order of severity.
enum class HaState { Normal, Warning, EmptyPassive, Danger };

const char* NameHaState(HaState state);  // "normal", "warning", "empty_passive", "danger"
std::optional<HaState> ParseHaState(std::string_view text);

struct ClusterNode {
  std::string name;
  std::string state;  // "online", "offline", "unclean", "standby", "maintenance", "pending"
};

// One reason why a cluster, or a mirror, is not normal.
struct ClusterCause {
  std::string what;    // as people are told: "node_down"
  std::string name;    // of the node, resource or device; empty: it is the whole cluster
  std::string detail;  // "standby"; the node of a resource; "StandAlone, Primary/Unknown"
};

struct ClusterReport {
  HaState state = HaState::Normal;
  std::vector<ClusterNode> nodes;
  std::vector<ClusterCause> causes;  // the weightier first; none where the state is normal
};

// What the XML of `crm_mon -1 --output-as=xml` tells; none, with the reason in
// words, when it is not such a document or says that crm_mon failed.
std::optional<ClusterReport> ParseClusterState(std::string_view xml, std::string& reason);

// The worst state of the devices in /proc/drbd; none when it lists no device that is in
// use. Only DRBD 8 lists any; `isVersion8` tells. `causes` gains one for each that is not normal.
std::optional<HaState> ParseDrbdState(std::string_view text, bool& isVersion8,
                                      std::vector<ClusterCause>& causes);

}  // namespace linux_platform
