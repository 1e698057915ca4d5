// The UPS: NUT's server on this machine, asked live. NUT knows every make of UPS, so
// there is no second way.
#include <algorithm>
#include <utility>

#include "platform/linux/base/log_once.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/contract/error.h"
#include "platform/linux/contract/request.h"
#include "platform/linux/notes/notes.h"
#include "platform/linux/ups/nut_client.h"
#include "platform/linux/ups/nut_configuration.h"
#include "platform/linux/ups/ups_address.h"
#include "platform/linux/ups/ups_status.h"
#include "platform/status/source_status.h"
#include "velac.h"

using namespace linux_platform;
using source_status::Source, source_status::SourceScope;

namespace {

constexpr auto kBound = std::chrono::seconds(1);
constexpr auto kDetailsBound = std::chrono::milliseconds(500);
constexpr const char* kStartServer = "systemctl enable --now nut-driver.target nut-server";
constexpr const char* kAcceptUps = "accept=\"ups\" in /etc/velainfo.conf, if it is watched there";

constinit LogOnce failures("UPS", "systemctl status nut-server nut-driver.target");
constinit CircuitBreaker breaker;
// A server that tells states and then hangs is not blamed for these.
constinit CircuitBreaker detailsBreaker;

// What one request hears of all UPSes.
struct Round {
  bool answered = false;  // a server did
  bool connected = false;
  UpsState worst = UpsState::Unknown;
  std::vector<Trouble> troubles;
  std::vector<HeardUps> upses;  // that told their state
};

void AddReading(const NutServer& server, UpsReading& ups, Round& round) {
  if (!ups.refusal.empty()) {
    round.troubles.emplace_back(ups.refusal);
    return;
  }
  const UpsState state = JudgeUpsWords(ups.words);
  round.connected = true;
  round.worst = std::max(round.worst, state);
  TellUpsNotes(ups.name, ups.words);
  // One that is off supplies nothing here: whether it has mains matters to nobody.
  if (state == UpsState::Unknown && !HasUpsWord(ups.words, "OFF"))
    round.troubles.emplace_back("UPS " + ups.name +
                                " does not say whether the mains are there: \"" + ups.words + "\"");
  HeardUps& heard = round.upses.emplace_back();
  heard.name = std::move(ups.name);
  heard.words = std::move(ups.words);
  heard.host = server.host;
  heard.port = server.port;
}

void AskServer(const NutServer& server, TimeBudget& budget, Round& round) {
  const bool wholeTurn = budget.GrantsWholeTurn(kBound);
  std::string reason;
  std::vector<UpsReading> readings;
  const NutAnswer answer = ReadUpses(server, budget.DeadlineFor(kBound), readings, reason);
  for (UpsReading& ups : readings) AddReading(server, ups, round);
  if (answer == NutAnswer::Late && wholeTurn) breaker.Trip(reason);
  round.answered |= answer != NutAnswer::NoServer;
  if (answer == NutAnswer::NoServer)
    round.troubles.emplace_back(std::move(reason), kStartServer);
  else if (answer != NutAnswer::Read)
    round.troubles.emplace_back(std::move(reason));
}

// One server for all UPSes that are behind it.
NutServer& FindServer(std::vector<NutServer>& servers, const UpsAddress& address) {
  const auto found = std::ranges::find_if(servers, [&address](const NutServer& server) {
    return server.host == address.host && server.port == address.port;
  });
  if (found != servers.end()) return *found;
  return servers.emplace_back(NutServer{address.host, address.port, {}, false});
}

// `all`: what a server has beside the named, too.
Round AskServers(const std::vector<std::string>& monitors, bool all, TimeBudget& budget) {
  Round round;
  const std::string ownName = ReadHostName();
  std::vector<NutServer> servers;
  for (const std::string& monitor : monitors) {
    const UpsAddress address = ParseUpsAddress(monitor, ownName);
    if (address.host.empty()) {
      round.troubles.emplace_back(
          "UPS " + monitor + " belongs to another machine: only a local upsd is asked", kAcceptUps);
      continue;
    }
    NutServer& server = FindServer(servers, address);
    server.all |= all || address.name.empty();
    const bool isNew = std::ranges::find(server.names, address.name) == server.names.end();
    if (!address.name.empty() && isNew) server.names.push_back(address.name);
  }
  for (const NutServer& server : servers) AskServer(server, budget, round);
  return round;
}

// What is to be asked, and why that is not known.
struct Plan {
  bool isSetUp = false;
  std::vector<std::string> monitors;
  bool all = true;
  Trouble unread;
};

// Where upsmon finds the server of this machine: "@localhost:4000"; "" for the usual place.
std::string FindOwnServer(const std::vector<std::string>& monitors) {
  const std::string ownName = ReadHostName();
  for (const std::string& monitor : monitors)
    if (!ParseUpsAddress(monitor, ownName).host.empty())
      return monitor.substr(std::min(monitor.find('@'), monitor.size()));
  return {};
}

// NUT's files are root's and its own group's; others take the collector's word.
Plan MakePlan(const Settings& settings) {
  Plan plan;
  if (settings.Text("ups.monitor") != nullptr) {
    for (const std::string_view word : settings.List("ups.monitor"))
      plan.monitors.emplace_back(word);
    plan.isSetUp = true;
    plan.all = false;
    return plan;
  }
  NutConfiguration nut;
  std::string unread, reason;
  if (!ReadNutFiles(nut, unread)) {
    const SnapshotState state = ReadSnapshot(nut, reason);
    plan.unread = state == SnapshotState::Absent ? MissCollector(unread) : ToTrouble(state, reason);
  }
  plan.isSetUp = nut.IsSetUp();
  for (const std::string& name : nut.served)
    plan.monitors.push_back(name + FindOwnServer(nut.monitors));
  plan.monitors.insert(plan.monitors.end(), nut.monitors.begin(), nut.monitors.end());
  if (plan.monitors.empty()) plan.monitors.emplace_back();
  return plan;
}

Round AskOrLeaveAlone(const Plan& plan, TimeBudget& budget) {
  std::string reason;
  if (!breaker.IsOpen(reason)) return AskServers(plan.monitors, plan.all, budget);
  Round round;
  round.answered = true;
  round.troubles.emplace_back(reason);
  return round;
}

int ReportAbsent(SourceScope& scope) {
  scope.Absent("no UPS is set up: neither MODE in %s nor ups.monitor in %s", kNutMode,
               kCurrentSettings);
  failures.Recovered();
  return 0;
}

void Report(const Round& round, SourceScope& scope) {
  failures.Report(scope, round.troubles);
  if (!round.troubles.empty()) SetError(Error::SourceFailed);
}

// One server has all that follow `first` from there.
std::vector<HeardUps*> ListNeighbours(std::vector<HeardUps>& upses, std::size_t first) {
  std::vector<HeardUps*> neighbours;
  for (std::size_t i = first; i < upses.size(); ++i)
    if (upses[i].host == upses[first].host && upses[i].port == upses[first].port)
      neighbours.push_back(&upses[i]);
    else
      break;
  return neighbours;
}

}  // namespace

// What is not told in time is not known; the server's own state was told before.
const std::vector<HeardUps>& Request::GetUpses() {
  std::vector<HeardUps>& upses = learned_.upses;
  std::string reason;
  if (std::exchange(upsesDescribed_, true) || detailsBreaker.IsOpen(reason)) return upses;
  for (std::size_t first = 0; first < upses.size();) {
    const std::vector<HeardUps*> neighbours = ListNeighbours(upses, first);
    const NutServer server = {upses[first].host, upses[first].port, {}, false};
    const bool wholeTurn = timeBudget_.GrantsWholeTurn(kDetailsBound);
    const NutAnswer answer =
        DescribeUpses(server, timeBudget_.DeadlineFor(kDetailsBound), neighbours, reason);
    if (answer == NutAnswer::Late && wholeTurn) detailsBreaker.Trip(reason);
    first += neighbours.size();
  }
  return upses;
}

int VELAUPSInfoGet(VELA_UPS_INFO* record) {
  SourceScope scope(Source::Ups);
  if (record == nullptr) return SetError(Error::BadArgument);
  *record = {};
  const RequestScope request;
  const Plan plan = MakePlan(request->GetCurrentSettings().settings);
  if (!plan.isSetUp && plan.unread.IsNone()) return ReportAbsent(scope);

  Round round = AskOrLeaveAlone(plan, request->GetTimeBudget());
  request->GetLearned().upses = std::move(round.upses);
  // A server that answers is proof enough of a UPS; none proves nothing.
  if (!plan.isSetUp && !round.answered) {
    failures.Tell(scope, plan.unread);
    return 0;
  }
  // What it ought to have besides nobody knows.
  if (!plan.unread.IsNone()) round.troubles.insert(round.troubles.begin(), plan.unread);
  record->enabled = 1;
  record->connected = round.connected ? 1 : 0;
  record->state = static_cast<std::int32_t>(round.worst);
  Report(round, scope);
  return 0;
}
