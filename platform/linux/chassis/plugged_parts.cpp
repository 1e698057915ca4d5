#include "platform/linux/chassis/plugged_parts.h"

#include "platform/linux/base/snapshot.h"

namespace linux_platform {

bool PluggedParts::Has(const std::string& device, const std::string& part) const {
  const auto found = parts.find(device);
  return found != parts.end() && found->second.contains(part);
}

Json::Value PluggedParts::ToJson() const {
  Json::Value members(Json::objectValue);
  for (const auto& [device, names] : parts)
    for (const std::string& name : names) members[device].append(name);
  return members;
}

PluggedParts PluggedParts::FromJson(const Json::Value& document) {
  PluggedParts plugged;
  if (!document.isObject()) return plugged;
  for (const std::string& device : document.getMemberNames())
    for (const Json::Value& name : ListMember(document, device.c_str()))
      if (name.isString()) plugged.parts[device].insert(name.asString());
  return plugged;
}

}  // namespace linux_platform
