#include "platform/linux/chassis/fan_memory.h"

#include "common/json_reader.h"

namespace linux_platform {

using common::FindMember;

FanHistory HistoryOf(const Json::Value& fans, const std::string& key) {
  FanHistory history;
  const Json::Value* known = FindMember(fans, key.c_str());
  if (known == nullptr) return history;
  const Json::Value* turned = FindMember(*known, "turned");
  history.turned = turned != nullptr && turned->isBool() && turned->asBool();
  const Json::Value* stopped = FindMember(*known, "stopped");
  if (stopped != nullptr && stopped->isInt64()) history.stopped = stopped->asInt64();
  return history;
}

Json::Value RememberFans(const Json::Value& before, const std::vector<FanReading>& fans,
                         long long now) {
  Json::Value after = before.isObject() ? before : Json::Value(Json::objectValue);
  for (const FanReading& fan : fans) {
    if (!fan.input) continue;
    const FanHistory history = HistoryOf(before, fan.key);
    const bool turns = *fan.input > 0;
    if (!turns && !history.turned) continue;
    Json::Value& known = after[fan.key] = Json::Value(Json::objectValue);
    known["turned"] = true;
    if (!turns)
      known["stopped"] = static_cast<Json::Int64>(history.stopped != 0 ? history.stopped : now);
  }
  return after;
}

}  // namespace linux_platform
