// What systemd and the web server's own test say of it: the collector's snapshot "web_server".
#pragma once

#include <string>

#include <json/value.h>

#include "platform/linux/services/configuration_fault.h"

namespace linux_platform {

struct WebServerSnapshot {
  static constexpr const char* kSource = "web_server";
  static constexpr const char *kPassed = "passed", *kRefused = "refused";

  std::string unit;            // "nginx.service"
  std::string active, reload;  // what systemd said of the unit, as in UnitState
  std::string test;            // kPassed or kRefused; empty: nothing was wrong, so none was made
  ConfigurationFault fault;    // why it was refused

  Json::Value ToJson() const;
  static WebServerSnapshot FromJson(const Json::Value& document);
};

}  // namespace linux_platform
