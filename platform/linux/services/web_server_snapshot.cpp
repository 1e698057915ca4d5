#include "platform/linux/services/web_server_snapshot.h"

#include "common/json_reader.h"
#include "platform/linux/base/snapshot.h"

namespace linux_platform {

constexpr const char *kUnit = "unit", *kActive = "active", *kReload = "reload", *kTest = "test",
                     *kWords = "words", *kPath = "path", *kLine = "line";

Json::Value WebServerSnapshot::ToJson() const {
  Json::Value members(Json::objectValue);
  members[kUnit] = unit;
  members[kActive] = active;
  members[kReload] = reload;
  if (!test.empty()) members[kTest] = test;
  if (!fault.words.empty()) members[kWords] = fault.words;
  if (!fault.path.empty()) members[kPath] = fault.path;
  if (fault.line != 0) members[kLine] = Json::Int64{fault.line};
  return members;
}

WebServerSnapshot WebServerSnapshot::FromJson(const Json::Value& document) {
  return {common::TextMember(document, kUnit),
          common::TextMember(document, kActive),
          common::TextMember(document, kReload),
          common::TextMember(document, kTest),
          {common::TextMember(document, kWords), common::TextMember(document, kPath),
           NumberMember(document, kLine)}};
}

}  // namespace linux_platform
