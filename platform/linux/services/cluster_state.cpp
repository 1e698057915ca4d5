#include <iterator>
#include <string>
#include <utility>

#include <pugixml.hpp>

#include "platform/linux/services/ha_state.h"

namespace linux_platform {
namespace {

bool Is(const pugi::xml_node& node, const char* attribute) {
  return node.attribute(attribute).as_bool();
}

struct Members {
  int all = 0, online = 0;
  bool unclean = false, resting = false;
};

// The worst that is true of it.
const char* NameState(const pugi::xml_node& node) {
  if (Is(node, "unclean")) return "unclean";
  if (!Is(node, "online")) return "offline";
  for (const char* resting : {"standby", "maintenance", "pending"})
    if (Is(node, resting)) return resting;
  return "online";
}

Members Count(const pugi::xml_node& cluster, ClusterReport& report) {
  Members members;
  for (const pugi::xml_node& node : cluster.child("nodes").children("node")) {
    const std::string state = NameState(node), name = node.attribute("name").as_string();
    report.nodes.push_back({name, state});
    const bool unclean = Is(node, "unclean");
    const bool resting = Is(node, "standby") || Is(node, "maintenance") || Is(node, "pending");
    members.unclean |= unclean;
    members.resting |= resting;
    // Remote and guest nodes run resources but cannot take over.
    const bool counts = std::string_view(node.attribute("type").as_string("member")) == "member";
    const bool online = Is(node, "online");
    if (unclean || (counts && !online))
      report.causes.push_back({"node_down", name, state});
    else if (resting)
      report.causes.push_back({"node_resting", name, state});
    members.all += counts ? 1 : 0;
    members.online += counts && online ? 1 : 0;
  }
  return members;
}

struct Resources {
  bool any = false;
  std::vector<ClusterCause> failed, stopped;
};

// Groups, clones and bundles nest them, three deep at most.
void JudgeResources(const pugi::xml_node& parent, int deeper, Resources& resources) {
  for (const pugi::xml_node& node : parent.children()) {
    if (std::string_view(node.name()) != "resource") {
      if (deeper > 0) JudgeResources(node, deeper - 1, resources);
      continue;
    }
    resources.any = true;
    const std::string id = node.attribute("id").as_string();
    if ((Is(node, "failed") && !Is(node, "failure_ignored")) || Is(node, "blocked"))
      resources.failed.push_back(
          {"resource_failed", id, node.child("node").attribute("name").as_string()});
    const std::string_view wanted = node.attribute("target_role").as_string("Started");
    if (Is(node, "managed") && wanted != "Stopped" &&
        std::string_view(node.attribute("role").as_string()) == "Stopped")
      resources.stopped.push_back({"resource_stopped", id, ""});
  }
}

void AppendAll(std::vector<ClusterCause>& causes, std::vector<ClusterCause>& more) {
  causes.insert(causes.end(), std::make_move_iterator(more.begin()),
                std::make_move_iterator(more.end()));
}

// What is wrong with the whole comes before its nodes and resources.
HaState Judge(const pugi::xml_node& cluster, ClusterReport& report) {
  const pugi::xml_node summary = cluster.child("summary");
  const pugi::xml_node coordinator = summary.child("current_dc");
  const Members members = Count(cluster, report);
  Resources resources;
  JudgeResources(cluster.child("resources"), 8, resources);

  // As its packages leave it: one node that nobody gave anything to do, or a partner.
  if (members.all < 2 && !resources.any) return HaState::Normal;
  const bool present = Is(coordinator, "present"), quorum = Is(coordinator, "with_quorum");
  const bool maintenance = Is(summary.child("cluster_options"), "maintenance-mode");
  const bool failed = !resources.failed.empty(), stopped = !resources.stopped.empty();
  std::vector<ClusterCause> whole;
  if (!present) whole.push_back({"cluster_without_head", "", ""});
  if (present && !quorum) whole.push_back({"cluster_without_quorum", "", ""});
  if (members.all < 2) whole.push_back({"cluster_alone", "", ""});
  if (maintenance) whole.push_back({"cluster_maintenance", "", ""});
  AppendAll(whole, resources.failed);
  AppendAll(whole, report.causes);
  AppendAll(whole, resources.stopped);
  report.causes = std::move(whole);
  if (!present || !quorum || members.unclean || failed) return HaState::Danger;
  if (members.all < 2 || members.online < 2) return HaState::EmptyPassive;
  const bool warns = members.online < members.all || members.resting || maintenance || stopped;
  return warns ? HaState::Warning : HaState::Normal;
}

}  // namespace

std::optional<ClusterReport> ParseClusterState(std::string_view xml, std::string& reason) {
  pugi::xml_document document;
  const pugi::xml_parse_result parsed = document.load_buffer(xml.data(), xml.size());
  const pugi::xml_node cluster = document.child("pacemaker-result");
  const pugi::xml_node status = cluster.child("status");
  if (!parsed || !status) {
    reason = "crm_mon printed something that is no cluster status";
    return std::nullopt;
  }
  if (std::string_view(status.attribute("code").as_string()) != "0") {
    reason = std::string("crm_mon could not ask the cluster: ") +
             status.attribute("message").as_string("no reason given");
    return std::nullopt;
  }
  ClusterReport report;
  report.state = Judge(cluster, report);
  if (report.state == HaState::Normal) report.causes.clear();
  return report;
}

}  // namespace linux_platform
