#include <string_view>

#include "common/text.h"
#include "platform/linux/parts/parts.h"

namespace linux_platform {
namespace {

source_status::PartState Judge(std::string_view state) {
  using source_status::PartState;
  if (state == "online") return PartState::Well;
  if (state == "offline" || state == "unclean") return PartState::Failed;
  return state.empty() ? PartState::Unknown : PartState::Attention;
}

}  // namespace

void TellNodeParts(const ClusterReport& cluster, const TakePart& take) {
  for (const ClusterNode& node : cluster.nodes) {
    VELAPart part;
    part.kind = source_status::PartKind::Node;
    part.state = Judge(node.state);
    common::FillField(part.name, node.name);
    take(part);
  }
}

}  // namespace linux_platform
