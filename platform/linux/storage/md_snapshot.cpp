#include "platform/linux/storage/md_snapshot.h"

#include "common/json_reader.h"

namespace linux_platform {

constexpr const char *kArrays = "arrays", *kFirstBuild = "first build", *kBuilt = "built",
                     *kMakings = "makings", *kMade = "made", *kMeant = "meant", *kNotes = "notes";

namespace {

std::int64_t NumberMember(const Json::Value& object, const char* name) {
  const Json::Value* member = common::FindMember(object, name);
  return member != nullptr && member->isInt64() ? member->asInt64() : 0;
}

}  // namespace

bool MdSnapshot::IsBuilt(const std::string& array) const {
  const auto found = isFirstBuild.find(array);
  return found != isFirstBuild.end() && !found->second;
}

bool MdSnapshot::MayBeFirstBuild(const std::string& array) const {
  return !isFirstBuild.empty() && !IsBuilt(array);
}

bool MdSnapshot::IsMeantToHave(const std::string& array, std::int64_t members) const {
  const auto found = makings.find(array);
  return found != makings.end() && found->second.meant > 0 && found->second.meant <= members;
}

Json::Value MdSnapshot::ToJson() const {
  Json::Value members(Json::objectValue);
  Json::Value& arrays = members[kArrays] = Json::Value(Json::objectValue);
  for (const auto& [array, first] : isFirstBuild) arrays[array] = first ? kFirstBuild : kBuilt;
  for (const auto& [array, making] : makings) {
    Json::Value& entry = members[kMakings][array];
    entry[kMade] = making.made;
    entry[kMeant] = making.meant;
  }
  for (const auto& [array, list] : notes)
    for (const std::string& note : list) members[kNotes][array].append(note);
  return members;
}

MdSnapshot MdSnapshot::FromJson(const Json::Value& document) {
  MdSnapshot snapshot;
  const Json::Value* arrays = common::FindMember(document, kArrays);
  if (arrays == nullptr || !arrays->isObject()) return snapshot;
  for (auto entry = arrays->begin(); entry != arrays->end(); ++entry)
    snapshot.isFirstBuild[entry.name()] = common::ViewText(*entry) == kFirstBuild;
  const Json::Value* makings = common::FindMember(document, kMakings);
  if (makings == nullptr || !makings->isObject()) return snapshot;
  for (auto entry = makings->begin(); entry != makings->end(); ++entry)
    snapshot.makings[entry.name()] = {NumberMember(*entry, kMade), NumberMember(*entry, kMeant)};
  return snapshot;
}

}  // namespace linux_platform
