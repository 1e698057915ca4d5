#include "platform/linux/storage/expected_snapshot.h"

#include "common/json_reader.h"
#include "platform/linux/base/snapshot.h"

namespace linux_platform {
namespace {

using common::TextMember;

constexpr const char *kGroups = "volume_groups", *kName = "name", *kHealth = "health",
                     *kWhy = "why", *kDanger = "danger", *kAbnormal = "abnormal";

}  // namespace

Json::Value ExpectedSnapshot::ToJson() const {
  Json::Value members(Json::objectValue);
  Json::Value& list = members[kGroups] = Json::Value(Json::arrayValue);
  for (const Group& group : groups) {
    Json::Value& entry = list.append(Json::Value(Json::objectValue));
    entry[kName] = group.name;
    entry[kHealth] = group.health == Health::Danger ? kDanger : kAbnormal;
    entry[kWhy] = group.why;
  }
  return members;
}

ExpectedSnapshot ExpectedSnapshot::FromJson(const Json::Value& document) {
  ExpectedSnapshot snapshot;
  for (const Json::Value& entry : ListMember(document, kGroups))
    snapshot.groups.push_back(
        {TextMember(entry, kName),
         TextMember(entry, kHealth) == kDanger ? Health::Danger : Health::Abnormal,
         TextMember(entry, kWhy)});
  return snapshot;
}

}  // namespace linux_platform
