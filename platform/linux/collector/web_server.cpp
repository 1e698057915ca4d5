// The web server's own test of its configuration, where systemd says that something is wrong
// with it: only root can put that test, and it may hang on a name that does not resolve.
#include <sys/wait.h>

#include "platform/linux/base/root.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/collector/children.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/services/web_suspicion.h"

namespace linux_platform {
namespace {

constexpr Bounds kBounds = {std::chrono::seconds(8), std::size_t{64} << 10};

// "passed" or "refused"; empty, with the reason, when the test did not come to its end.
std::string Verdict(const WebServer& server, std::string& reason) {
  std::vector<std::string> arguments = server.Test();
  arguments[0] = BelowRoot(arguments[0]);
  const Outcome outcome = RunTogether({{arguments, kBounds}}).front();
  reason = outcome.reason;
  if (!reason.empty()) return {};
  if (outcome.cut == Child::Cut::None && outcome.status >= 0 && WIFEXITED(outcome.status))
    return WEXITSTATUS(outcome.status) == 0 ? "passed" : "refused";
  reason = arguments[0] + (outcome.cut == Child::Cut::Late ? " did not finish within 8 s"
                                                           : " did not come to its end");
  return {};
}

}  // namespace

Json::Value CollectWebServer() {
  TimeBudget budget;
  const WebServerState web = ReadWebServer(ReadSettings(kCurrentSettings).settings, budget);
  if (web.unit.empty() || web.answer == UnitsAnswer::NoSystemd) return {};
  if (web.answer != UnitsAnswer::Read) return Unread(web.reason);
  Json::Value members(Json::objectValue);
  members["unit"] = web.unit;
  members["active"] = web.state.active;
  members["reload"] = web.state.reload;
  const WebServer* tester = web.Tester();
  if (!web.IsSuspicious() || tester == nullptr) return members;
  std::string reason;
  members["test"] = Verdict(*tester, reason);
  return reason.empty() ? members : Unread(reason);
}

}  // namespace linux_platform
