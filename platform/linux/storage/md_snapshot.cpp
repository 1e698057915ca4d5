#include "platform/linux/storage/md_snapshot.h"

#include "common/json_reader.h"
#include "platform/linux/base/snapshot.h"

namespace linux_platform {

constexpr const char *kArrays = "arrays", *kFirstBuild = "first build", *kBuilt = "built",
                     *kMakings = "makings", *kMade = "made", *kMeant = "meant", *kNotes = "notes",
                     *kMismatches = "mismatches", *kBadBlocks = "bad blocks";

namespace {

// The member's members, when it is an object; else none.
template <typename Read>
void ForEachIn(const Json::Value& document, const char* name, const Read& read) {
  const Json::Value* members = common::FindMember(document, name);
  if (members == nullptr || !members->isObject()) return;
  for (auto entry = members->begin(); entry != members->end(); ++entry) read(entry.name(), *entry);
}

MdSnapshot::Notes NotesFromJson(const Json::Value& entry) {
  MdSnapshot::Notes notes = {NumberMember(entry, kMismatches), {}};
  for (const Json::Value& member : ListMember(entry, kBadBlocks))
    notes.badBlocks.emplace_back(common::ViewText(member));
  return notes;
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
  for (const auto& [array, found] : notes) {
    Json::Value& entry = members[kNotes][array];
    entry[kMismatches] = found.mismatches;
    for (const std::string& member : found.badBlocks) entry[kBadBlocks].append(member);
  }
  return members;
}

MdSnapshot MdSnapshot::FromJson(const Json::Value& document) {
  MdSnapshot snapshot;
  ForEachIn(document, kArrays, [&](const std::string& array, const Json::Value& entry) {
    snapshot.isFirstBuild[array] = common::ViewText(entry) == kFirstBuild;
  });
  ForEachIn(document, kMakings, [&](const std::string& array, const Json::Value& entry) {
    snapshot.makings[array] = {NumberMember(entry, kMade), NumberMember(entry, kMeant)};
  });
  ForEachIn(document, kNotes, [&](const std::string& array, const Json::Value& entry) {
    snapshot.notes[array] = NotesFromJson(entry);
  });
  return snapshot;
}

}  // namespace linux_platform
