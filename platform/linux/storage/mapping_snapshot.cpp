#include "platform/linux/storage/mapping_snapshot.h"

#include <array>

#include "common/json_reader.h"
#include "platform/linux/base/snapshot.h"

namespace linux_platform {
namespace {

using common::TextMember;

constexpr std::array<std::string_view, 3> kHealths = {"normal", "abnormal", "danger"};
constexpr const char *kObjects = "objects", *kName = "name", *kUuid = "uuid", *kDevice = "device",
                     *kKind = "kind", *kHealth = "health", *kWhy = "why", *kFailed = "failed",
                     *kOf = "of";

Json::Value ToJson(const Mapping& mapping) {
  Json::Value entry(Json::objectValue);
  entry[kName] = mapping.name;
  entry[kUuid] = mapping.uuid;
  entry[kDevice] = mapping.device;
  entry[kKind] = mapping.kind;
  entry[kHealth] = std::string(kHealths[static_cast<std::size_t>(mapping.health)]);
  if (!mapping.why.empty()) entry[kWhy] = mapping.why;
  if (mapping.failed > 0) {
    entry[kFailed] = mapping.failed;
    entry[kOf] = mapping.of;
  }
  return entry;
}

Mapping MappingFromJson(const Json::Value& entry) {
  Mapping mapping;
  mapping.name = TextMember(entry, kName);
  mapping.uuid = TextMember(entry, kUuid);
  mapping.device = TextMember(entry, kDevice);
  mapping.kind = TextMember(entry, kKind);
  mapping.why = TextMember(entry, kWhy);
  mapping.failed = NumberMember(entry, kFailed);
  mapping.of = NumberMember(entry, kOf);
  const auto found = std::ranges::find(kHealths, TextMember(entry, kHealth));
  if (found != kHealths.end()) mapping.health = static_cast<Health>(found - kHealths.begin());
  return mapping;
}

constexpr std::string_view kLvm = "LVM-";  // what the UUIDs of its mappings begin with

}  // namespace

Json::Value MappingSnapshot::ToJson() const {
  Json::Value members(Json::objectValue);
  Json::Value& list = members[kObjects] = Json::Value(Json::arrayValue);
  for (const Mapping& mapping : mappings) list.append(linux_platform::ToJson(mapping));
  if (!trouble.empty()) members[kTrouble] = trouble;
  return members;
}

bool OnlyRootKnows(std::string_view name, std::string_view uuid) {
  for (const std::string_view kind : {"mpath-", "VDO-", "CRYPT-INTEGRITY-", "DMRAID-"})
    if (uuid.starts_with(kind)) return true;
  if (!uuid.starts_with(kLvm)) return false;
  // LVM keeps these endings for itself: no volume of a user has them.
  for (const std::string_view part : {"_rimage_", "_mimage_"})
    if (name.find(part) != name.npos) return true;
  for (const std::string_view layer : {"-tpool", "-vpool", "-cdata", "-cvol", "-cow"})
    if (uuid.ends_with(layer)) return true;
  return false;
}

bool IsMissingPart(std::string_view name, std::string_view uuid) {
  if (!uuid.starts_with(kLvm) || uuid.find("-missing_") == uuid.npos) return false;
  for (const std::string_view part : {"_rimage_", "_rmeta_", "_mimage_", "_mlog"})
    if (name.find(part) != name.npos) return false;
  return true;
}

MappingSnapshot MappingSnapshot::FromJson(const Json::Value& document) {
  MappingSnapshot snapshot;
  for (const Json::Value& entry : ListMember(document, kObjects))
    snapshot.mappings.push_back(MappingFromJson(entry));
  snapshot.trouble = TextMember(document, kTrouble);
  return snapshot;
}

}  // namespace linux_platform
