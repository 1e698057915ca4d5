#include "platform/linux/ups/nut_configuration.h"

#include <cerrno>
#include <cstring>

#include "common/json_reader.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/ups/ups_address.h"

namespace linux_platform {

constexpr const char *kModeMember = "mode", *kMonitorsMember = "monitors",
                     *kServedMember = "served";

Json::Value NutConfiguration::ToJson() const {
  Json::Value members(Json::objectValue);
  members[kModeMember] = mode;
  Json::Value& list = members[kMonitorsMember] = Json::Value(Json::arrayValue);
  for (const std::string& monitor : monitors) list.append(monitor);
  for (const std::string& name : served) members[kServedMember].append(name);
  return members;
}

NutConfiguration NutConfiguration::FromJson(const Json::Value& document) {
  NutConfiguration nut = {common::TextMember(document, kModeMember), {}, {}};
  for (const Json::Value& monitor : ListMember(document, kMonitorsMember))
    if (monitor.isString()) nut.monitors.push_back(monitor.asString());
  for (const Json::Value& name : ListMember(document, kServedMember))
    if (name.isString()) nut.served.push_back(name.asString());
  return nut;
}

bool ReadNutFiles(NutConfiguration& nut, std::string& reason) {
  static FileMemo<SettingsFile> memo;
  const std::shared_ptr<const SettingsFile> file = RecallSettings(kNutMode, memo);
  const char* mode = file->settings.Text("MODE");
  nut.mode = mode != nullptr ? mode : "";
  reason = file->reason;
  if (reason.empty() && !nut.IsSetUp()) return true;
  std::string text;
  const auto read = [&](const char* path) {
    const ReadResult result = ReadSmallFile(BelowRoot(path).c_str(), kSettingsCap, text);
    if (result == ReadResult::Failed && reason.empty())
      reason = std::string(path) + " could not be read: " + std::strerror(errno);
    return result == ReadResult::Read || result == ReadResult::TooLarge;
  };
  if (read(kNutMonitors)) nut.monitors = ParseMonitors(text);
  // One that asks another machine's server has none of its own.
  if (nut.mode != "netclient" && read(kNutServed)) nut.served = ParseSections(text);
  return reason.empty();
}

}  // namespace linux_platform
