#include "platform/linux/storage/seen_disks.h"

#include <utility>

#include "common/json_reader.h"
#include "platform/linux/base/snapshot.h"

namespace linux_platform {
namespace {

using common::TextMember;

constexpr const char *kDisks = "disks", *kSize = "size", *kGone = "gone", *kUses = "uses",
                     *kKind = "kind", *kOf = "of", *kPlace = "place";

// Texts of an identity, by their members.
template <typename Identity>
auto ListTexts(Identity& identity) {
  return std::to_array<std::pair<const char*, decltype(&identity.device)>>(
      {{"device", &identity.device},
       {"model", &identity.model},
       {"serial", &identity.serial},
       {"port", &identity.port},
       {"enclosure", &identity.slot.enclosure},
       {"slot", &identity.slot.number}});
}

Json::Value ToJson(const SeenDisk& disk) {
  Json::Value entry(Json::objectValue);
  for (const auto& [name, text] : ListTexts(disk.identity))
    if (!text->empty()) entry[name] = *text;
  entry[kSize] = Json::UInt64{disk.identity.size};
  if (disk.gone != 0) entry[kGone] = Json::Int64{disk.gone};
  for (const SeenDisk::Use& use : disk.uses) {
    Json::Value& added = entry[kUses].append(Json::Value(Json::objectValue));
    added[kKind] = use.kind;
    added[kOf] = use.of;
    if (!use.place.empty()) added[kPlace] = use.place;
  }
  return entry;
}

SeenDisk DiskFromJson(const Json::Value& entry) {
  SeenDisk disk;
  for (const auto& [name, text] : ListTexts(disk.identity)) *text = TextMember(entry, name);
  disk.identity.size = common::SizeMember(entry, kSize);
  disk.gone = NumberMember(entry, kGone);
  for (const Json::Value& use : ListMember(entry, kUses))
    disk.uses.push_back({TextMember(use, kKind), TextMember(use, kOf), TextMember(use, kPlace)});
  return disk;
}

}  // namespace

Json::Value SeenDisks::ToJson() const {
  Json::Value members(Json::objectValue);
  Json::Value& list = members[kDisks] = Json::Value(Json::arrayValue);
  for (const SeenDisk& disk : disks) list.append(linux_platform::ToJson(disk));
  return members;
}

SeenDisks SeenDisks::FromJson(const Json::Value& document) {
  SeenDisks seen;
  for (const Json::Value& entry : ListMember(document, kDisks))
    seen.disks.push_back(DiskFromJson(entry));
  return seen;
}

}  // namespace linux_platform
