// The web server that is in use, and whether systemd says that something is wrong with it.
// Asked by every request, and by the collector.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "platform/linux/base/trouble.h"
#include "platform/linux/services/systemd_units.h"

namespace linux_platform {

class Settings;

struct WebServer {
  const char* unit;
  std::array<const char*, 4> test;  // the program and what makes it test its configuration

  bool IsInstalled() const;
  std::vector<std::string> BuildTest() const;  // the program's path first, not below the root
};

struct WebServerState {
  UnitsAnswer answer = UnitsAnswer::Read;
  std::string reason;  // what else than Read happened
  std::string unit;    // empty: no web server is installed
  UnitState state;
  Trouble missing;  // another that is enabled and whose program is not there

  // It has failed, or refused its last reload: such a one stays "active", with the old
  // configuration in force.
  bool IsSuspicious() const;
  // Who can tell whether the configuration is to blame; null when nobody here knows how.
  const WebServer* FindTester() const;
};

// The unit that the site names (web.unit), else of the installed servers the first in use.
WebServerState ReadWebServer(const Settings& settings, TimeBudget& budget);

}  // namespace linux_platform
