#include "platform/linux/storage/seen_storage.h"

#include "common/json_reader.h"
#include "platform/linux/base/snapshot.h"

namespace linux_platform {
namespace {

constexpr const char *kSources = "sources", *kInside = "inside", *kOutside = "outside",
                     *kScrubs = "scrubs", *kDays = "days", *kLooked = "looked";

}  // namespace

Seen SeenStorage::Find(const std::string& what) const {
  const auto found = isInside.find(what);
  if (found == isInside.end()) return Seen::Never;
  return found->second ? Seen::Inside : Seen::Outside;
}

Json::Value SeenStorage::ToJson() const {
  Json::Value members(Json::objectValue);
  Json::Value& sources = members[kSources] = Json::Value(Json::objectValue);
  for (const auto& [source, inside] : isInside) sources[source] = inside ? kInside : kOutside;
  for (const auto& [name, scrub] : scrubs) {
    Json::Value& entry = members[kScrubs][name];
    entry[kDays] = scrub.days;
    entry[kLooked] = scrub.looked;
  }
  return members;
}

SeenStorage SeenStorage::FromJson(const Json::Value& document) {
  SeenStorage seen;
  const Json::Value* scrubs = common::FindMember(document, kScrubs);
  if (scrubs != nullptr && scrubs->isObject())
    for (auto entry = scrubs->begin(); entry != scrubs->end(); ++entry)
      seen.scrubs[entry.name()] = {NumberMember(*entry, kDays), NumberMember(*entry, kLooked)};
  const Json::Value* sources = common::FindMember(document, kSources);
  if (sources == nullptr || !sources->isObject()) return seen;
  for (const std::string& source : sources->getMemberNames()) {
    const std::string where = common::TextMember(*sources, source.c_str());
    if (where == kInside || where == kOutside) seen.isInside[source] = where == kInside;
  }
  return seen;
}

SeenStorage ReadSeenStorage() { return SeenStorage::FromJson(ReadMemory(SeenStorage::kSource)); }

}  // namespace linux_platform
