#include "platform/linux/storage/mapping_snapshot.h"

#include <array>

#include "common/json_reader.h"
#include "platform/linux/base/snapshot.h"

namespace linux_platform {
namespace {

using common::TextMember;

constexpr std::array<std::string_view, 3> kHealths = {"normal", "abnormal", "danger"};
constexpr const char *kObjects = "objects", *kName = "name", *kUuid = "uuid", *kDevice = "device",
                     *kKind = "kind", *kHealth = "health", *kWhy = "why";

Json::Value ToJson(const Mapping& mapping) {
  Json::Value entry(Json::objectValue);
  entry[kName] = mapping.name;
  entry[kUuid] = mapping.uuid;
  entry[kDevice] = mapping.device;
  entry[kKind] = mapping.kind;
  entry[kHealth] = std::string(kHealths[static_cast<std::size_t>(mapping.health)]);
  if (!mapping.why.empty()) entry[kWhy] = mapping.why;
  return entry;
}

Mapping MappingFromJson(const Json::Value& entry) {
  Mapping mapping = {TextMember(entry, kName), TextMember(entry, kUuid), TextMember(entry, kDevice),
                     TextMember(entry, kKind), Health::Normal,           TextMember(entry, kWhy)};
  const auto found = std::ranges::find(kHealths, TextMember(entry, kHealth));
  if (found != kHealths.end()) mapping.health = static_cast<Health>(found - kHealths.begin());
  return mapping;
}

}  // namespace

Json::Value MappingSnapshot::ToJson() const {
  Json::Value members(Json::objectValue);
  Json::Value& list = members[kObjects] = Json::Value(Json::arrayValue);
  for (const Mapping& mapping : mappings) list.append(linux_platform::ToJson(mapping));
  if (!trouble.empty()) members[kTrouble] = trouble;
  return members;
}

MappingSnapshot MappingSnapshot::FromJson(const Json::Value& document) {
  MappingSnapshot snapshot;
  for (const Json::Value& entry : ListMember(document, kObjects))
    snapshot.mappings.push_back(MappingFromJson(entry));
  snapshot.trouble = TextMember(document, kTrouble);
  return snapshot;
}

}  // namespace linux_platform
