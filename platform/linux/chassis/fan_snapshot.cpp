#include "platform/linux/chassis/fan_snapshot.h"

#include "common/json_reader.h"

namespace linux_platform {
namespace {

using common::FindMember;

constexpr const char *kFans = "fans", *kTurned = "turned", *kStopped = "stopped";

FanHistory HistoryFromJson(const Json::Value& entry) {
  FanHistory history;
  const Json::Value* turned = FindMember(entry, kTurned);
  history.turned = turned != nullptr && turned->isBool() && turned->asBool();
  const Json::Value* stopped = FindMember(entry, kStopped);
  if (stopped != nullptr && stopped->isInt64()) history.stopped = stopped->asInt64();
  return history;
}

}  // namespace

FanHistory FanSnapshot::FindHistory(const std::string& key) const {
  const auto found = fans.find(key);
  return found == fans.end() ? FanHistory() : found->second;
}

void FanSnapshot::Remember(const std::vector<FanReading>& readings, long long now) {
  for (const FanReading& fan : readings) {
    if (!fan.input) continue;
    FanHistory history = FindHistory(fan.key);
    const bool turns = *fan.input > 0;
    if (!turns && !history.turned) continue;
    history.turned = true;
    if (turns) history.stopped = 0;
    if (!turns && history.stopped == 0) history.stopped = now;
    fans[fan.key] = history;
  }
}

Json::Value FanSnapshot::ToJson() const {
  Json::Value members(Json::objectValue);
  Json::Value& entries = members[kFans] = Json::Value(Json::objectValue);
  for (const auto& [key, history] : fans) {
    entries[key][kTurned] = history.turned;
    if (history.stopped != 0) entries[key][kStopped] = Json::Int64{history.stopped};
  }
  return members;
}

FanSnapshot FanSnapshot::FromJson(const Json::Value& document) {
  FanSnapshot snapshot;
  const Json::Value* entries = FindMember(document, kFans);
  if (entries == nullptr || !entries->isObject()) return snapshot;
  for (auto entry = entries->begin(); entry != entries->end(); ++entry)
    snapshot.fans[entry.name()] = HistoryFromJson(*entry);
  return snapshot;
}

}  // namespace linux_platform
