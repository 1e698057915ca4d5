#include "platform/linux/storage/md_snapshot.h"

#include "common/json_reader.h"

namespace linux_platform {

constexpr const char *kArrays = "arrays", *kFirstBuild = "first build", *kBuilt = "built";

bool MdSnapshot::IsBuilt(const std::string& array) const {
  const auto found = isFirstBuild.find(array);
  return found != isFirstBuild.end() && !found->second;
}

bool MdSnapshot::MayBeFirstBuild(const std::string& array) const {
  return !isFirstBuild.empty() && !IsBuilt(array);
}

Json::Value MdSnapshot::ToJson() const {
  Json::Value members(Json::objectValue);
  Json::Value& arrays = members[kArrays] = Json::Value(Json::objectValue);
  for (const auto& [array, first] : isFirstBuild) arrays[array] = first ? kFirstBuild : kBuilt;
  return members;
}

MdSnapshot MdSnapshot::FromJson(const Json::Value& document) {
  MdSnapshot snapshot;
  const Json::Value* arrays = common::FindMember(document, kArrays);
  if (arrays == nullptr || !arrays->isObject()) return snapshot;
  for (auto entry = arrays->begin(); entry != arrays->end(); ++entry)
    snapshot.isFirstBuild[entry.name()] = common::ViewText(*entry) == kFirstBuild;
  return snapshot;
}

}  // namespace linux_platform
