// The UPS: NUT's server on this machine, asked live. NUT knows every make of UPS, so
// there is no second way.
#include <algorithm>
#include <cstring>

#include "platform/linux/base/log_once.h"
#include "platform/linux/base/root.h"
#include "platform/linux/contract/error.h"
#include "platform/linux/contract/request.h"
#include "platform/linux/ups/nut_client.h"
#include "platform/linux/ups/ups_status.h"
#include "platform/status/source_status.h"
#include "velac.h"

using namespace linux_platform;
using source_status::Source, source_status::SourceScope;

namespace {

constexpr const char* kNutMode = "/etc/nut/nut.conf";
constexpr const char* kNutMonitors = "/etc/nut/upsmon.conf";
constexpr auto kBound = std::chrono::seconds(1);

constinit LogOnce failures("UPS", "systemctl status nut-server nut-driver.target");
constinit CircuitBreaker breaker;

// The packaged nut.conf says MODE=none: NUT is there, but nobody set it up. Only root and
// NUT's own group may read it; for others a server that answers says as much.
enum class Nut { NotSetUp, SetUp, Unreadable };

Nut ReadNutMode() {
  const SettingsFile file = ReadSettings(kNutMode);
  if (file.state == SettingsState::Failed && file.settings.IsEmpty()) return Nut::Unreadable;
  const char* mode = file.settings.Text("MODE");
  return mode == nullptr || std::strcmp(mode, "none") == 0 ? Nut::NotSetUp : Nut::SetUp;
}

// Without monitor lines, or leave to read them, the server's first UPS is asked for.
std::vector<UpsAddress> ReadMonitors() {
  std::string text;
  if (ReadSmallFile(BelowRoot(kNutMonitors).c_str(), kSettingsCap, text) == ReadResult::Failed)
    text.clear();
  std::vector<UpsAddress> monitors = ParseMonitors(text);
  if (monitors.empty()) monitors.push_back(ParseUpsAddress(""));
  return monitors;
}

// The UPSes that the settings name, else those that NUT monitors.
std::vector<UpsAddress> ChooseAddresses(const Settings& settings) {
  std::vector<UpsAddress> addresses;
  for (const std::string_view word : settings.List("ups.monitor"))
    addresses.push_back(ParseUpsAddress(word));
  return settings.Text("ups.monitor") != nullptr ? addresses : ReadMonitors();
}

// Asks each; the worst state counts. The reason is that of the last one that failed.
// False: not even a server was there.
bool ReadStates(const std::vector<UpsAddress>& addresses, TimeBudget& budget, VELA_UPS_INFO& record,
                std::string& reason) {
  const bool wholeTurn = budget.GrantsWholeTurn(kBound);
  const auto deadline = budget.DeadlineFor(kBound);
  bool server = false;
  for (const UpsAddress& address : addresses) {
    if (address.host.empty()) {
      reason = "UPS " + address.name + " belongs to another machine: only a local upsd is asked";
      continue;
    }
    std::string words;
    const NutAnswer answer = ReadUpsStatus(address, deadline, words, reason);
    server |= answer != NutAnswer::NoServer;
    if (answer == NutAnswer::Late && wholeTurn) breaker.Trip(reason);
    if (answer == NutAnswer::Late) return true;
    if (answer != NutAnswer::Read) continue;
    record.connected = 1;
    record.state = std::max(record.state, static_cast<std::int32_t>(JudgeUpsWords(words)));
  }
  return server;
}

int ReportAbsent(SourceScope& scope) {
  scope.Absent("no UPS is set up: neither MODE in %s nor ups.monitor in %s", kNutMode,
               kCurrentSettings);
  failures.Recovered();
  return 0;
}

}  // namespace

int VELAUPSInfoGet(VELA_UPS_INFO* record) {
  SourceScope scope(Source::Ups);
  if (record == nullptr) return SetError(Error::BadArgument);
  *record = {};
  const RequestScope request;
  const Settings& settings = request->GetCurrentSettings().settings;
  const Nut nut = settings.Text("ups.monitor") != nullptr ? Nut::SetUp : ReadNutMode();
  if (nut == Nut::NotSetUp) return ReportAbsent(scope);

  std::string reason;
  bool server = true;
  if (!breaker.IsOpen(reason))
    server = ReadStates(ChooseAddresses(settings), request->GetTimeBudget(), *record, reason);
  if (nut == Nut::Unreadable && !server) return ReportAbsent(scope);
  record->enabled = 1;
  if (!reason.empty()) SetError(Error::SourceFailed);
  failures.Report(scope, reason);
  return 0;
}
