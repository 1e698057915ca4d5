// The web server: systemd raises the suspicion, cheaply and on every request; only then
// does the server's own test of its configuration decide.
#include <unistd.h>

#include <string>

#include "platform/linux/base/deadline.h"
#include "platform/linux/base/log_once.h"
#include "platform/linux/base/program.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/contract/error.h"
#include "platform/linux/contract/request.h"
#include "platform/linux/services/web_server_snapshot.h"
#include "platform/status/source_status.h"
#include "vela_webserver.h"
#include "velac.h"

using namespace linux_platform;
using source_status::Source, source_status::SourceScope;

namespace {

constexpr Bounds kTestBounds = {std::chrono::seconds(5), std::size_t{64} << 10, true};

constinit LogOnce failures("web server", "systemctl --failed");
constinit CircuitBreaker testBreaker;

enum class Test { Passed, Refused, Unknown };

Test TestConfiguration(const WebServer& server, Request& request, std::string& reason) {
  if (testBreaker.IsOpen(reason)) return Test::Unknown;
  std::string output;
  int status = 0;
  const ProgramEnd end =
      RunProgram(server.BuildTest(), kTestBounds, request.GetTimeBudget(), output, status, reason);
  if (end == ProgramEnd::Exited && status != 0)
    request.GetLearned().refused = ParseConfigurationTest(output);
  if (end == ProgramEnd::Exited) return status == 0 ? Test::Passed : Test::Refused;
  if (end == ProgramEnd::Late) testBreaker.Trip(reason);
  return Test::Unknown;
}

// What the collector's test of this unit said, while the unit is as it was then.
Test ReadCollectedTest(Request& request, SourceScope& scope, Trouble& trouble) {
  const WebServerState& suspect = request.GetWebServer();
  const std::string& unit = suspect.unit;
  Json::Value document;
  std::string reason;
  const SnapshotState snapshot = ReadSnapshot(WebServerSnapshot::kSource, document, reason);
  trouble = snapshot == SnapshotState::Absent
                ? MissCollector(unit + " is in trouble; only root can test its configuration")
                : ToTrouble(snapshot, std::move(reason));
  if (snapshot != SnapshotState::Read) return Test::Unknown;
  auto seen = WebServerSnapshot::FromJson(document);
  if (seen.unit != unit || seen.active != suspect.state.active ||
      seen.reload != suspect.state.reload || seen.test.empty()) {
    trouble = unit + " is in trouble since vela-platform-collect last looked; it tests the " +
              "configuration within a minute";
    return Test::Unknown;
  }
  scope.Read("%s", SeenByCollector(document).c_str());
  if (seen.test == WebServerSnapshot::kPassed) return Test::Passed;
  request.GetLearned().refused = std::move(seen.fault);
  return Test::Refused;
}

}  // namespace

int VELAServiceIsHttpDefaultConf(void) {
  SourceScope scope(Source::WebServer);
  const RequestScope request;
  const WebServerState& server = request->GetWebServer();
  if (server.unit.empty()) {
    scope.Absent("no web server is installed");
    failures.Report(scope, server.missing);
    return 0;
  }
  switch (server.answer) {
    case UnitsAnswer::NoSystemd:
      scope.Absent("%s", server.reason.c_str());
      failures.Recovered();
      return 0;
    case UnitsAnswer::Failed:
    case UnitsAnswer::Late:
      SetError(Error::SourceFailed);
      // The caller logs every -1; one failure, however long it lasts, is one.
      return failures.Tell(scope, server.reason) ? -1 : 0;
    case UnitsAnswer::Read:
      break;
  }
  if (server.state.load != "loaded") scope.Absent("no unit %s", server.unit.c_str());
  if (!server.IsSuspicious()) {
    failures.Report(scope, server.missing);
    return 0;
  }
  if (server.FindTester() != nullptr) return 1;
  failures.Tell(scope, server.unit + " is in trouble; how to test its configuration is not known");
  return 0;
}

namespace velaw3 {

// Nobody else may be handed over: what is to be done is all that it keeps.
NginxConfManager::NginxConfManager(NGINXCONF_OPERATOR operation)
    : state_(operation == NGINXCONF_APPLY ? this : nullptr) {}
NginxConfManager::~NginxConfManager() {}

// True when the configuration is sound, as far as can be told.
bool NginxConfManager::run() {
  if (state_ == nullptr) return true;
  const RequestScope request;
  const WebServerState& suspect = request->GetWebServer();
  if (!suspect.IsSuspicious() || suspect.FindTester() == nullptr) return true;
  SourceScope scope(Source::WebServer);
  Trouble trouble;
  // Its test reads keys and writes a log: only root's word about it is worth anything.
  const Test test = geteuid() == 0
                        ? TestConfiguration(*suspect.FindTester(), *request, trouble.reason)
                        : ReadCollectedTest(*request, scope, trouble);
  // Whatever ended it, nobody is served.
  if (test == Test::Passed && suspect.state.active == "failed")
    trouble = suspect.unit + " has failed, though its configuration passes its test";
  failures.Report(scope, trouble);
  return test != Test::Refused;
}

}  // namespace velaw3
