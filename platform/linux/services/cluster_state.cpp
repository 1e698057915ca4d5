#include <pugixml.hpp>

#include "platform/linux/services/ha_state.h"

namespace linux_platform {
namespace {

bool Is(const pugi::xml_node& node, const char* attribute) {
  return node.attribute(attribute).as_bool();
}

struct Members {
  int all = 0, online = 0;
  bool unclean = false, resting = false;  // resting: standby, maintenance or pending
};

Members Count(const pugi::xml_node& cluster) {
  Members members;
  for (const pugi::xml_node& node : cluster.child("nodes").children("node")) {
    members.unclean |= Is(node, "unclean");
    members.resting |= Is(node, "standby") || Is(node, "maintenance") || Is(node, "pending");
    // Remote and guest nodes run resources but cannot take over.
    if (std::string_view(node.attribute("type").as_string("member")) != "member") continue;
    ++members.all;
    members.online += Is(node, "online") ? 1 : 0;
  }
  return members;
}

struct Resources {
  bool any = false, failed = false, stopped = false;
};

// Groups, clones and bundles nest them, three deep at most.
void JudgeResources(const pugi::xml_node& parent, int deeper, Resources& resources) {
  for (const pugi::xml_node& node : parent.children()) {
    if (std::string_view(node.name()) != "resource") {
      if (deeper > 0) JudgeResources(node, deeper - 1, resources);
      continue;
    }
    resources.any = true;
    resources.failed |= (Is(node, "failed") && !Is(node, "failure_ignored")) || Is(node, "blocked");
    const std::string_view wanted = node.attribute("target_role").as_string("Started");
    resources.stopped |= Is(node, "managed") && wanted != "Stopped" &&
                         std::string_view(node.attribute("role").as_string()) == "Stopped";
  }
}

}  // namespace

std::optional<HaState> ParseClusterState(std::string_view xml, std::string& reason) {
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
  const pugi::xml_node summary = cluster.child("summary");
  const pugi::xml_node coordinator = summary.child("current_dc");
  const Members members = Count(cluster);
  Resources resources;
  JudgeResources(cluster.child("resources"), 8, resources);

  // As its packages leave it: one node that nobody gave anything to do, or a partner.
  if (members.all < 2 && !resources.any) return HaState::Normal;
  if (!Is(coordinator, "present") || !Is(coordinator, "with_quorum") || members.unclean ||
      resources.failed)
    return HaState::Danger;
  if (members.all < 2 || members.online < 2) return HaState::EmptyPassive;
  const bool maintenance = Is(summary.child("cluster_options"), "maintenance-mode");
  if (members.online < members.all || members.resting || maintenance || resources.stopped)
    return HaState::Warning;
  return HaState::Normal;
}

}  // namespace linux_platform
