// The web server: systemd raises the suspicion, cheaply and on every request; only then
// does the server's own test of its configuration decide.
#include <unistd.h>

#include <string>

#include "common/json_reader.h"
#include "platform/linux/base/deadline.h"
#include "platform/linux/base/log_once.h"
#include "platform/linux/base/program.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/contract/error.h"
#include "platform/linux/services/web_suspicion.h"
#include "platform/status/source_status.h"
#include "vela_webserver.h"
#include "velac.h"

using namespace linux_platform;
using common::TextMember;
using source_status::Source, source_status::SourceScope;

namespace {

constexpr Bounds kTestBounds = {std::chrono::seconds(5), std::size_t{64} << 10};

constinit FailureLog failures("web server");
constinit CircuitBreaker testBreaker;

// The unit under suspicion, and who can test its configuration; between the two questions of
// one request.
struct Suspect {
  const WebServer* tester = nullptr;
  UnitState state;
};
thread_local Suspect suspect;

enum class Test { Passed, Refused, Unknown };

Test AskServer(const WebServer& server, std::string& reason) {
  if (testBreaker.IsOpen(reason)) return Test::Unknown;
  std::string output;
  int status = 0;
  const ProgramEnd end = RunProgram(server.Test(), kTestBounds, output, status, reason);
  if (end == ProgramEnd::Exited) return status == 0 ? Test::Passed : Test::Refused;
  if (end == ProgramEnd::Late) testBreaker.Trip(reason);
  return Test::Unknown;
}

// What the collector's test of this unit said, while the unit is as it was then.
Test AskCollector(const Suspect& suspected, SourceScope& scope, std::string& reason) {
  const std::string unit = suspected.tester->unit;
  Json::Value seen;
  switch (ReadSnapshot("web_server", seen, reason)) {
    case SnapshotState::Absent:
      reason =
          unit + " is in trouble, and only root can test its configuration. " + kStartCollector;
      return Test::Unknown;
    case SnapshotState::Failed:
      return Test::Unknown;
    case SnapshotState::Read:
      break;
  }
  const std::string test = TextMember(seen, "test");
  if (TextMember(seen, "unit") != unit || TextMember(seen, "active") != suspected.state.active ||
      TextMember(seen, "reload") != suspected.state.reload || test.empty()) {
    reason = unit + " is in trouble since vela-platform-collect last looked; it tests the " +
             "configuration within a minute";
    return Test::Unknown;
  }
  scope.Read("%s", SeenByCollector(seen).c_str());
  return test == "passed" ? Test::Passed : Test::Refused;
}

}  // namespace

int VELAServiceIsHttpDefaultConf(void) {
  SourceScope scope(Source::WebServer);
  suspect = {};
  WebLook look = LookAtWebServer();
  if (look.unit.empty()) {
    scope.Absent("no web server is installed");
    return failures.Fine(), 0;
  }
  switch (look.answer) {
    case UnitsAnswer::NoSystemd:
      scope.Absent("%s", look.reason.c_str());
      return failures.Fine(), 0;
    case UnitsAnswer::Failed:
    case UnitsAnswer::Late:
      SetError(Error::SourceFailed);
      // The caller logs every -1; one failure, however long it lasts, is one.
      return failures.Failed(scope, look.reason) ? -1 : 0;
    case UnitsAnswer::Read:
      break;
  }
  if (look.state.load != "loaded") scope.Absent("no unit %s", look.unit.c_str());
  if (!look.IsSuspicious()) return failures.Fine(), 0;
  if (const WebServer* tester = look.Tester()) {
    suspect = {tester, std::move(look.state)};
    return 1;
  }
  failures.Failed(scope, look.unit + " is in trouble; how to test its configuration is not known");
  return 0;
}

namespace velaw3 {

NginxConfManager::NginxConfManager(NGINXCONF_OPERATOR operation)
    : state_(operation == NGINXCONF_APPLY && suspect.tester != nullptr ? &suspect : nullptr) {}
NginxConfManager::~NginxConfManager() {}

// True when the configuration is sound, as far as can be told.
bool NginxConfManager::run() {
  const auto* suspected = static_cast<const Suspect*>(state_);
  if (suspected == nullptr) return true;  // nothing was suspected
  SourceScope scope(Source::WebServer);
  std::string reason;
  // Its test reads keys and writes a log: only root's word about it is worth anything.
  const Test test = geteuid() == 0 ? AskServer(*suspected->tester, reason)
                                   : AskCollector(*suspected, scope, reason);
  if (test == Test::Unknown)
    failures.Failed(scope, reason);
  else
    failures.Fine();
  return test != Test::Refused;
}

}  // namespace velaw3
