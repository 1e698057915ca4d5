// Whether NUT is set up on this machine, and what it monitors: from its own files, or from the
// collector's snapshot "nut" for users who may not read these.
#pragma once

#include <string>
#include <vector>

#include <json/value.h>

namespace linux_platform {

constexpr const char* kNutFolder = "/etc/nut";
constexpr const char* kNutMode = "/etc/nut/nut.conf";
constexpr const char* kNutMonitors = "/etc/nut/upsmon.conf";
constexpr const char* kNutServed = "/etc/nut/ups.conf";

struct NutConfiguration {
  static constexpr const char* kSource = "nut";

  std::string mode;                   // "none", as Debian ships it, or "": nobody set NUT up
  std::vector<std::string> monitors;  // "rack@localhost:3493"
  std::vector<std::string> served;    // those of ups.conf, which a server here has: "rack"

  bool IsSetUp() const { return !mode.empty() && mode != "none"; }

  Json::Value ToJson() const;
  static NutConfiguration FromJson(const Json::Value& document);
};

// What the files below the root say. False: one of them could not be read, for that reason; what
// the other says is there.
bool ReadNutFiles(NutConfiguration& nut, std::string& reason);

}  // namespace linux_platform
