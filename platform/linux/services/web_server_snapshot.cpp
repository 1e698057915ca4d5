#include "platform/linux/services/web_server_snapshot.h"

#include "common/json_reader.h"

namespace linux_platform {

constexpr const char *kUnit = "unit", *kActive = "active", *kReload = "reload", *kTest = "test";

Json::Value WebServerSnapshot::ToJson() const {
  Json::Value members(Json::objectValue);
  members[kUnit] = unit;
  members[kActive] = active;
  members[kReload] = reload;
  if (!test.empty()) members[kTest] = test;
  return members;
}

WebServerSnapshot WebServerSnapshot::FromJson(const Json::Value& document) {
  return {common::TextMember(document, kUnit), common::TextMember(document, kActive),
          common::TextMember(document, kReload), common::TextMember(document, kTest)};
}

}  // namespace linux_platform
