// The web server: systemd raises the suspicion, cheaply and on every request; only then
// does the server's own test of its configuration decide.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/error.h"
#include "platform/linux/failure_log.h"
#include "platform/linux/patience.h"
#include "platform/linux/program.h"
#include "platform/linux/root.h"
#include "platform/linux/settings.h"
#include "platform/linux/systemd_units.h"
#include "platform/voice/voice.h"
#include "vela_webserver.h"
#include "velac.h"

using namespace vela::linuxplatform;
using vela::platform::Source, vela::platform::SourceScope;

namespace {

constexpr Bounds kTestBounds = {std::chrono::seconds(5), std::size_t{64} << 10};

constinit FailureLog failures("web server");
constinit CircuitBreaker testBreaker;

struct Server {
  const char* unit;
  std::array<const char*, 4> test;  // the program and what makes it test its configuration
};
constexpr std::array<Server, 3> kServers = {{
    {"nginx.service", {"/usr/sbin/nginx", "-t", "-q"}},
    {"apache2.service", {"/usr/sbin/apache2ctl", "-t"}},
    {"lighttpd.service", {"/usr/sbin/lighttpd", "-tt", "-f", "/etc/lighttpd/lighttpd.conf"}},
}};

// The unit under suspicion, between the two questions of one request.
thread_local constinit const Server* suspect = nullptr;

bool IsInstalled(const Server& server) {
  return access(BelowRoot(server.test[0]).c_str(), X_OK) == 0;
}

// The unit that the site names, or those of the servers that are installed.
std::vector<std::string> Units() {
  std::string text, reason;
  ReadSettings(kCurrentSettings, text, reason);
  const Settings settings(std::move(text));
  if (const char* named = settings.Value("web.unit")) return {named};
  std::vector<std::string> units;
  for (const Server& server : kServers)
    if (IsInstalled(server)) units.emplace_back(server.unit);
  return units;
}

const Server* KnownServer(const std::string& unit) {
  const auto found = std::ranges::find(kServers, std::string_view(unit), [](const Server& each) {
    return std::string_view(each.unit);
  });
  return found == kServers.end() ? nullptr : &*found;
}

// A reload that fails leaves the unit "active", and the old configuration in force.
bool IsSuspicious(const UnitState& unit) {
  return unit.active == "failed" || (!unit.reload.empty() && unit.reload != "success");
}

// Of several installed servers the first that is in use counts.
std::size_t InUse(const std::vector<UnitState>& states) {
  const auto used = std::ranges::find_if(states, [](const UnitState& state) {
    return state.load == "loaded" && state.active != "inactive";
  });
  return used == states.end() ? 0 : static_cast<std::size_t>(used - states.begin());
}

// Whether the configuration is sound, as far as can be told.
bool PassesTest(const Server& server, SourceScope& scope) {
  std::string output, reason;
  int status = 0;
  if (geteuid() != 0)
    reason = std::string(server.unit) + " has failed; only root can test its configuration";
  else if (!testBreaker.IsOpen(reason)) {
    std::vector<std::string> arguments;
    for (const char* argument : server.test)
      if (argument != nullptr) arguments.emplace_back(argument);
    const ProgramEnd end = RunProgram(arguments, kTestBounds, output, status, reason);
    if (end == ProgramEnd::Exited) return failures.Fine(), status == 0;
    if (end == ProgramEnd::Late) testBreaker.Trip(reason);
  }
  failures.Failed(scope, reason);
  return true;
}

}  // namespace

int VELAServiceIsHttpDefaultConf(void) {
  SourceScope scope(Source::WebServer);
  suspect = nullptr;
  const std::vector<std::string> units = Units();
  if (units.empty()) {
    scope.Absent("no web server is installed");
    return failures.Fine(), 0;
  }
  std::vector<UnitState> states;
  std::string reason;
  switch (ReadUnits(units, states, reason)) {
    case UnitsAnswer::NoSystemd:
      scope.Absent("%s", reason.c_str());
      return failures.Fine(), 0;
    case UnitsAnswer::Failed:
    case UnitsAnswer::Late:
      SetError(Error::SourceFailed);
      // The caller logs every -1; one failure, however long it lasts, is one.
      return failures.Failed(scope, reason) ? -1 : 0;
    case UnitsAnswer::Read:
      break;
  }
  const std::size_t used = InUse(states);
  if (states[used].load != "loaded") scope.Absent("no unit %s", units[used].c_str());
  if (!IsSuspicious(states[used])) return failures.Fine(), 0;
  suspect = KnownServer(units[used]);
  if (suspect != nullptr && IsInstalled(*suspect)) return 1;
  suspect = nullptr;
  failures.Failed(scope,
                  units[used] + " is in trouble; how to test its configuration is not known");
  return 0;
}

namespace velaw3 {

NginxConfManager::NginxConfManager(NGINXCONF_OPERATOR operation)
    : state_(operation == NGINXCONF_APPLY ? const_cast<Server*>(suspect) : nullptr) {}
NginxConfManager::~NginxConfManager() {}

bool NginxConfManager::run() {
  const auto* server = static_cast<const Server*>(state_);
  if (server == nullptr) return true;  // nothing was suspected
  SourceScope scope(Source::WebServer);
  return PassesTest(*server, scope);
}

}  // namespace velaw3
