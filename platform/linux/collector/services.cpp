// Pacemaker's cluster and the web server's test of its configuration: both answer root alone.
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/collector/commands.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/services/cluster_snapshot.h"
#include "platform/linux/services/pacemaker.h"
#include "platform/linux/services/web_server.h"
#include "platform/linux/services/web_server_snapshot.h"

namespace linux_platform {
namespace {

constexpr Bounds kClusterBounds = {std::chrono::seconds(8), std::size_t{1} << 20};
// The test may wait for a name that does not resolve.
constexpr Bounds kTestBounds = {std::chrono::seconds(8), std::size_t{64} << 10, true};

// How the test ended; with the reason, when it did not come to its end.
void TestConfiguration(const WebServer& server, WebServerSnapshot& snapshot, std::string& reason) {
  std::vector<std::string> arguments = server.BuildTest();
  arguments[0] = BelowRoot(arguments[0]);
  const CommandResult result = RunCommand({arguments, kTestBounds});
  reason = result.reason;
  if (!reason.empty()) return;
  if (result.cut != Child::Cut::None || result.status < 0 || !WIFEXITED(result.status)) {
    reason = arguments[0] + (result.cut == Child::Cut::Late ? " did not finish within 8 s"
                                                            : " did not come to its end");
    return;
  }
  const bool passed = WEXITSTATUS(result.status) == 0;
  snapshot.test = passed ? WebServerSnapshot::kPassed : WebServerSnapshot::kRefused;
  if (!passed) snapshot.fault = ParseConfigurationTest(result.output);
}

}  // namespace

// Pacemaker also answers the group haclient, whose members may change the cluster, too; the
// health service is no member.
Json::Value CollectCluster() {
  std::vector<std::string> command = BuildClusterCommand();
  command[0] = BelowRoot(command[0]);
  if (!Access(command[0], X_OK) || !PacemakerListens()) return {};
  const CommandResult result = RunCommand({command, kClusterBounds});
  if (!result.reason.empty()) return MakeError(result.reason);
  if (result.cut == Child::Cut::Late) return MakeError("crm_mon did not finish within 8 s");
  std::string reason;
  const ClusterSnapshot snapshot = {ParseClusterState(result.output, reason)};
  return snapshot.report ? snapshot.ToJson() : MakeError(reason);
}

Json::Value CollectWebServer() {
  TimeBudget budget;
  const WebServerState web = ReadWebServer(ReadSettings(kCurrentSettings).settings, budget);
  if (web.unit.empty() || web.answer == UnitsAnswer::NoSystemd) return {};
  if (web.answer != UnitsAnswer::Read) return MakeError(web.reason);
  WebServerSnapshot snapshot = {web.unit, web.state.active, web.state.reload, {}, {}};
  const WebServer* tester = web.FindTester();
  if (!web.IsSuspicious() || tester == nullptr) return snapshot.ToJson();
  std::string reason;
  TestConfiguration(*tester, snapshot, reason);
  return reason.empty() ? snapshot.ToJson() : MakeError(reason);
}

}  // namespace linux_platform
