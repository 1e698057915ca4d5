#include "platform/linux/services/cluster_snapshot.h"

#include "common/json_reader.h"
#include "platform/linux/base/snapshot.h"

namespace linux_platform {
namespace {

using common::TextMember;

constexpr const char *kState = "state", *kNodes = "nodes", *kCauses = "causes", *kName = "name",
                     *kWhat = "what", *kDetail = "detail";

}  // namespace

Json::Value ClusterSnapshot::ToJson() const {
  Json::Value members(Json::objectValue);
  if (!report) return members;
  members[kState] = NameHaState(report->state);
  for (const ClusterNode& node : report->nodes) {
    Json::Value& entry = members[kNodes].append(Json::Value(Json::objectValue));
    entry[kName] = node.name;
    entry[kState] = node.state;
  }
  for (const ClusterCause& cause : report->causes) {
    Json::Value& entry = members[kCauses].append(Json::Value(Json::objectValue));
    entry[kWhat] = cause.what;
    entry[kName] = cause.name;
    entry[kDetail] = cause.detail;
  }
  return members;
}

ClusterSnapshot ClusterSnapshot::FromJson(const Json::Value& document) {
  const std::optional<HaState> state = ParseHaState(TextMember(document, kState));
  if (!state) return {};
  ClusterReport report = {*state, {}, {}};
  for (const Json::Value& node : ListMember(document, kNodes))
    report.nodes.push_back({TextMember(node, kName), TextMember(node, kState)});
  for (const Json::Value& cause : ListMember(document, kCauses))
    report.causes.push_back(
        {TextMember(cause, kWhat), TextMember(cause, kName), TextMember(cause, kDetail)});
  return {std::move(report)};
}

}  // namespace linux_platform
