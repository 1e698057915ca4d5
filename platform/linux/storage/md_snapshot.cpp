#include "platform/linux/storage/md_snapshot.h"

#include "common/json_reader.h"

namespace linux_platform {

constexpr const char *kArrays = "arrays", *kFirstBuild = "first build", *kBuilt = "built",
                     *kDevicesEver = "devices ever";

bool MdSnapshot::IsBuilt(const std::string& array) const {
  const auto found = isFirstBuild.find(array);
  return found != isFirstBuild.end() && !found->second;
}

bool MdSnapshot::MayBeFirstBuild(const std::string& array) const {
  return !isFirstBuild.empty() && !IsBuilt(array);
}

bool MdSnapshot::NeverHadMore(const std::string& array, std::int64_t devices) const {
  const auto found = devicesEver.find(array);
  return found != devicesEver.end() && found->second > 0 && found->second <= devices;
}

Json::Value MdSnapshot::ToJson() const {
  Json::Value members(Json::objectValue);
  Json::Value& arrays = members[kArrays] = Json::Value(Json::objectValue);
  for (const auto& [array, first] : isFirstBuild) arrays[array] = first ? kFirstBuild : kBuilt;
  for (const auto& [array, devices] : devicesEver) members[kDevicesEver][array] = devices;
  return members;
}

MdSnapshot MdSnapshot::FromJson(const Json::Value& document) {
  MdSnapshot snapshot;
  const Json::Value* arrays = common::FindMember(document, kArrays);
  if (arrays == nullptr || !arrays->isObject()) return snapshot;
  for (auto entry = arrays->begin(); entry != arrays->end(); ++entry)
    snapshot.isFirstBuild[entry.name()] = common::ViewText(*entry) == kFirstBuild;
  const Json::Value* ever = common::FindMember(document, kDevicesEver);
  if (ever == nullptr || !ever->isObject()) return snapshot;
  for (auto entry = ever->begin(); entry != ever->end(); ++entry)
    if (entry->isInt64()) snapshot.devicesEver[entry.name()] = entry->asInt64();
  return snapshot;
}

}  // namespace linux_platform
