// The UPS: NUT's server on this machine, asked live. NUT knows every make of UPS, so
// there is no second way.
#include <algorithm>
#include <cstring>

#include "platform/linux/base/deadline.h"
#include "platform/linux/base/log_once.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/contract/error.h"
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

constinit FailureLog failures("UPS");
constinit CircuitBreaker breaker;

// The packaged nut.conf says MODE=none: NUT is there, but nobody set it up. Only root and
// NUT's own group may read it; for others a server that answers says as much.
enum class Nut { NotSetUp, SetUp, Unreadable };

Nut ReadNutMode() {
  std::string text, reason;
  if (ReadSettings(kNutMode, text, reason) == SettingsState::Failed && text.empty())
    return Nut::Unreadable;
  const Settings nut(std::move(text));
  const char* mode = nut.Value("MODE");
  return mode == nullptr || std::strcmp(mode, "none") == 0 ? Nut::NotSetUp : Nut::SetUp;
}

// Without monitor lines, or leave to read them, the server's first UPS is asked for.
std::vector<UpsAddress> Monitored() {
  std::string text;
  if (ReadSmallFile(BelowRoot(kNutMonitors).c_str(), kSettingsCap, text) == ReadResult::Failed)
    text.clear();
  std::vector<UpsAddress> monitors = ParseMonitors(text);
  if (monitors.empty()) monitors.push_back(ParseUpsAddress(""));
  return monitors;
}

// Asks each; the worst state counts. The reason is that of the last one that failed.
// False: not even a server was there.
bool Ask(const std::vector<UpsAddress>& addresses, VELA_UPS_INFO& record, std::string& reason) {
  const bool wholeTurn = IsWholeTurn(kBound);
  const auto deadline = WaitUntil(kBound);
  bool server = false;
  for (const UpsAddress& address : addresses) {
    if (address.host.empty()) {
      reason = "UPS " + address.name + " belongs to another machine: only a local upsd is asked";
      continue;
    }
    std::string words;
    const NutAnswer answer = AskUpsStatus(address, deadline, words, reason);
    server |= answer != NutAnswer::NoServer;
    if (answer == NutAnswer::Late && wholeTurn) breaker.Trip(reason);
    if (answer == NutAnswer::Late) return true;
    if (answer != NutAnswer::Read) continue;
    record.connected = 1;
    record.state = std::max(record.state, static_cast<std::int32_t>(StateOf(words)));
  }
  return server;
}

void Absent(SourceScope& scope) {
  scope.Absent("no UPS is set up: neither MODE in %s nor ups.monitor in %s", kNutMode,
               kCurrentSettings);
  failures.Fine();
}

}  // namespace

int VELAUPSInfoGet(VELA_UPS_INFO* record) {
  SourceScope scope(Source::Ups);
  if (record == nullptr) return SetError(Error::BadArgument), -1;
  *record = {};
  std::string text, reason;
  ReadSettings(kCurrentSettings, text, reason);
  const Settings settings(std::move(text));
  const char* chosen = settings.Value("ups.monitor");
  const Nut nut = chosen != nullptr ? Nut::SetUp : ReadNutMode();
  if (nut == Nut::NotSetUp) return Absent(scope), 0;

  reason.clear();
  bool server = true;
  if (!breaker.IsOpen(reason))
    server = Ask(chosen != nullptr ? ParseUpsList(chosen) : Monitored(), *record, reason);
  if (nut == Nut::Unreadable && !server) return Absent(scope), 0;
  record->enabled = 1;
  if (reason.empty()) return failures.Fine(), 0;
  SetError(Error::SourceFailed);
  failures.Failed(scope, reason);
  return 0;
}
