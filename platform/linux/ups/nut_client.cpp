#include "platform/linux/ups/nut_client.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

#include "platform/linux/ups/nut_connection.h"

namespace linux_platform {
namespace {

using std::chrono::milliseconds, std::chrono::steady_clock;

constexpr int kMostListed = 64;

// Where a server that listens on "this machine" may be: the last is what Debian's /etc/hosts says
// of the machine's own name.
std::vector<const char*> ListHosts(const NutServer& server) {
  if (server.host != kThisMachine) return {server.host.c_str()};
  return {"127.0.0.1", "::1", "127.0.1.1"};
}

std::string Describe(const NutServer& server) {
  return "upsd at " + server.host + " port " + std::to_string(server.port);
}

NutAnswer Explain(NutAnswer answer, const NutServer& server, std::string& reason) {
  if (answer == NutAnswer::Late) reason = Describe(server) + " did not answer in time";
  if (answer == NutAnswer::Refused && reason.empty())
    reason = Describe(server) + " hung up, or sent something that is no answer";
  return answer;
}

// The first host where a server listens; `connection` is to it.
NutAnswer Connect(const NutServer& server, steady_clock::time_point deadline,
                  std::optional<NutConnection>& connection, std::string& reason) {
  for (const char* host : ListHosts(server)) {
    connection.emplace(host, server.port, deadline);
    if (connection->Connected()) return NutAnswer::Read;
    if (TimeLeft(deadline) == milliseconds(0)) return NutAnswer::Late;
    if (reason.empty()) reason = Describe(server) + ": " + connection->Trouble();
  }
  return NutAnswer::NoServer;
}

// Adds the names that the server lists.
NutAnswer ListUpses(NutConnection& connection, std::vector<std::string>& names) {
  std::string line;
  NutAnswer answer = connection.Ask("LIST UPS\n", line);
  if (answer == NutAnswer::Read && line != "BEGIN LIST UPS") return NutAnswer::Refused;
  for (int lines = 0; answer == NutAnswer::Read && lines <= kMostListed; ++lines) {
    answer = connection.ReadLine(line);
    if (answer != NutAnswer::Read || line == "END LIST UPS") return answer;
    if (!line.starts_with("UPS ")) continue;
    std::string name = line.substr(4, line.find(' ', 4) - 4);
    if (std::ranges::find(names, name) == names.end()) names.push_back(std::move(name));
  }
  return answer == NutAnswer::Read ? NutAnswer::Refused : answer;
}

// The variable's text; `refusal` is why the server has none.
NutAnswer ReadVariable(NutConnection& connection, const std::string& variable, std::string& text,
                       std::string& refusal) {
  std::string line;
  const NutAnswer answer = connection.Ask("GET VAR " + variable + "\n", line);
  if (answer != NutAnswer::Read) return answer;
  if (line.starts_with("ERR ")) {
    refusal = line.substr(4);
    return NutAnswer::Read;
  }
  const std::string expected = "VAR " + variable + " \"";
  if (!line.starts_with(expected) || !line.ends_with('"')) return NutAnswer::Refused;
  text = line.substr(expected.size(), line.size() - expected.size() - 1);
  return NutAnswer::Read;
}

// The first of the variables that the UPS has.
NutAnswer ReadFirstOf(NutConnection& connection, const std::string& ups,
                      const std::vector<const char*>& variables, std::string& text) {
  NutAnswer answer = NutAnswer::Read;
  std::string refusal;
  for (std::size_t i = 0; answer == NutAnswer::Read && text.empty() && i < variables.size(); ++i)
    answer = ReadVariable(connection, ups + ' ' + variables[i], text, refusal);
  return answer;
}

// A whole number, or one with its fraction cut off: "43", "2100.0".
std::optional<std::int64_t> ToFigure(const std::string& text) {
  std::int64_t figure = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), figure);
  if (error != std::errc()) return std::nullopt;
  return figure;
}

NutAnswer Describe(NutConnection& connection, HeardUps& ups) {
  std::string charge, runtime, low;
  NutAnswer answer = NutAnswer::Read;
  const auto read = [&](const std::vector<const char*>& variables, std::string& text) {
    if (answer == NutAnswer::Read) answer = ReadFirstOf(connection, ups.name, variables, text);
  };
  read({"battery.charge"}, charge);
  read({"battery.runtime"}, runtime);
  read({"battery.charge.low"}, low);
  read({"device.model", "ups.model"}, ups.model);
  read({"device.serial", "ups.serial"}, ups.serial);
  ups.charge = ToFigure(charge);
  ups.runtime = ToFigure(runtime);
  ups.lowCharge = ToFigure(low).value_or(0);
  return answer;
}

}  // namespace

NutAnswer ReadUpses(const NutServer& server, steady_clock::time_point deadline,
                    std::vector<UpsReading>& readings, std::string& reason) {
  if (!HasNutLibrary()) {
    reason = "NUT's client library " VELA_NUT_LIBRARY " cannot be loaded: install its package";
    return NutAnswer::Unsupported;
  }
  const SigpipeHeld held;
  std::optional<NutConnection> connection;
  NutAnswer answer = Connect(server, deadline, connection, reason);
  if (answer != NutAnswer::Read) return Explain(answer, server, reason);
  std::vector<std::string> names = server.names;
  if (server.all) answer = ListUpses(*connection, names);
  if (answer == NutAnswer::Read && names.empty()) {
    reason = Describe(server) + " knows no UPS: see /etc/nut/ups.conf";
    return NutAnswer::Refused;
  }
  for (std::size_t i = 0; answer == NutAnswer::Read && i < names.size(); ++i) {
    UpsReading reading = {names[i], {}, {}};
    answer = ReadVariable(*connection, names[i] + " ups.status", reading.words, reading.refusal);
    if (!reading.refusal.empty())
      reading.refusal = Describe(server) + " on UPS " + reading.name + ": " + reading.refusal;
    if (answer == NutAnswer::Read) readings.push_back(std::move(reading));
  }
  return Explain(answer, server, reason);
}

NutAnswer DescribeUpses(const NutServer& server, steady_clock::time_point deadline,
                        const std::vector<HeardUps*>& upses, std::string& reason) {
  const SigpipeHeld held;
  std::optional<NutConnection> connection;
  NutAnswer answer = Connect(server, deadline, connection, reason);
  for (std::size_t i = 0; answer == NutAnswer::Read && i < upses.size(); ++i)
    answer = Describe(*connection, *upses[i]);
  return Explain(answer, server, reason);
}

}  // namespace linux_platform
