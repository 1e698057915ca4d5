#include "platform/linux/services/web_server.h"

#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/settings.h"

namespace linux_platform {
namespace {

constexpr std::array<WebServer, 3> kServers = {{
    {"nginx.service", {"/usr/sbin/nginx", "-t", "-q"}},
    {"apache2.service", {"/usr/sbin/apache2ctl", "-t"}},
    {"lighttpd.service", {"/usr/sbin/lighttpd", "-tt", "-f", "/etc/lighttpd/lighttpd.conf"}},
}};

std::vector<std::string> ListUnits(const Settings& settings) {
  if (const char* named = settings.Text("web.unit")) return {named};
  std::vector<std::string> units;
  for (const WebServer& server : kServers)
    if (server.IsInstalled()) units.emplace_back(server.unit);
  return units;
}

Trouble FindMissing() {
  for (const WebServer& server : kServers)
    if (!server.IsInstalled() && IsEnabled(server.unit))
      return {std::string(server.unit) + " is enabled, and " + server.test[0] +
                  " is missing or nobody may run it",
              std::string("install it again; systemctl disable ") + server.unit +
                  ", if there is to be no such web server"};
  return {};
}

std::size_t FindInUse(const std::vector<UnitState>& states) {
  const auto used = std::ranges::find_if(states, [](const UnitState& state) {
    return state.load == "loaded" && state.active != "inactive";
  });
  return used == states.end() ? 0 : static_cast<std::size_t>(used - states.begin());
}

}  // namespace

bool WebServer::IsInstalled() const { return Access(BelowRoot(test[0]), X_OK); }

std::vector<std::string> WebServer::BuildTest() const {
  std::vector<std::string> arguments;
  for (const char* argument : test)
    if (argument != nullptr) arguments.emplace_back(argument);
  return arguments;
}

bool WebServerState::IsSuspicious() const {
  return state.active == "failed" || (!state.reload.empty() && state.reload != "success");
}

const WebServer* WebServerState::FindTester() const {
  const auto found = std::ranges::find(
      kServers, unit, [](const WebServer& server) { return std::string_view(server.unit); });
  return found != kServers.end() && found->IsInstalled() ? &*found : nullptr;
}

WebServerState ReadWebServer(const Settings& settings, TimeBudget& budget) {
  WebServerState server;
  const std::vector<std::string> units = ListUnits(settings);
  if (settings.Text("web.unit") == nullptr) server.missing = FindMissing();
  if (units.empty()) return server;
  std::vector<UnitState> states;
  server.answer = ReadUnits(units, budget, states, server.reason);
  const std::size_t used = server.answer == UnitsAnswer::Read ? FindInUse(states) : 0;
  server.unit = units[used];
  if (server.answer == UnitsAnswer::Read) server.state = std::move(states[used]);
  return server;
}

}  // namespace linux_platform
