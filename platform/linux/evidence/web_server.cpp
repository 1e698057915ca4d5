#include <string>

#include "common/text.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/evidence/cause.h"

namespace linux_platform {
namespace {

using common::FillField;

// The test as a person types it, who wants to hear all of it: "nginx -t".
std::string WriteTest(const WebServer& server) {
  const std::vector<std::string> arguments = server.BuildTest();
  std::string command(LastComponent(arguments.front()));
  for (std::size_t i = 1; i < arguments.size(); ++i)
    if (arguments[i] != "-q") command += " " + arguments[i];
  return command;
}

const char* ChooseKey(const ConfigurationFault& fault) {
  if (fault.words.empty()) return "configuration_unsound";
  return fault.path.empty() ? "configuration_message" : "configuration_refused";
}

}  // namespace

void TellWebServerEvidence(const WebServerState& server, const ConfigurationFault& refused,
                           TimeBudget& budget, const TakeEvidence& take) {
  const bool isDown = server.state.active == "failed";
  const std::string name = server.unit.substr(0, server.unit.rfind(".service"));
  const WebServer* tester = server.FindTester();
  VELAEvidence record = MakeEvidence(ChooseKey(refused), kSystemStatus, name);
  FillField(record.words, CutPeriod(refused.words));
  FillField(record.path, refused.path);
  record.figure = refused.line;
  if (isDown) record.since = ReadInactiveSince(server.unit, budget);
  if (tester != nullptr) SetShow(record, WriteTest(*tester));
  SetMend(record, {WriteCommand(isDown ? "systemctl restart {}" : "systemctl reload {}", {name})});
  take(record);
}

}  // namespace linux_platform
