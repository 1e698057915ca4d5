#include "platform/linux/services/systemd_units.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include "platform/linux/services/system_bus.h"

namespace linux_platform {
namespace {

constexpr const char* kUnit = "org.freedesktop.systemd1.Unit";
constexpr const char* kService = "org.freedesktop.systemd1.Service";

// Where the answer goes; outlives the connection that fills it.
struct Query {
  BusAnswers* answers;
  std::string* value;
};

int OnAnswer(sd_bus_message* message, void* userdata, sd_bus_error*) {
  const auto& query = *static_cast<const Query*>(userdata);
  --query.answers->awaited;
  if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
    // A unit of another kind has no reload.
    if (strcmp(error->name, SD_BUS_ERROR_UNKNOWN_PROPERTY) == 0 ||
        strcmp(error->name, SD_BUS_ERROR_UNKNOWN_INTERFACE) == 0)
      return 0;
    AssignText(query.answers->error, error->message != nullptr ? error->message : error->name);
    return 0;
  }
  const char* text = nullptr;
  const int read = sd_bus_message_read(message, "v", "s", &text);
  AssignText(read < 0 ? query.answers->error : *query.value, read < 0 ? strerror(-read) : text);
  return 0;
}

struct TimeQuery {
  BusAnswers answers;
  std::uint64_t time = 0;  // in microseconds
};

int OnTime(sd_bus_message* message, void* userdata, sd_bus_error*) {
  auto& query = *static_cast<TimeQuery*>(userdata);
  --query.answers.awaited;
  sd_bus_message_read(message, "v", "t", &query.time);
  return 0;
}

using Text = std::unique_ptr<char, void (*)(void*)>;

// The object of systemd that is the unit; empty, with the error, where it has none.
Text EncodePath(const std::string& unit, int& result) {
  char* path = nullptr;
  result = sd_bus_path_encode("/org/freedesktop/systemd1/unit", unit.c_str(), &path);
  return {path, free};
}

// Queues the three queries about one unit.
int QueueQueries(sd_bus* bus, const std::string& unit, Query* queries) {
  int result = 0;
  const Text path = EncodePath(unit, result);
  const char* const properties[][2] = {
      {kUnit, "LoadState"}, {kUnit, "ActiveState"}, {kService, "ReloadResult"}};
  for (std::size_t i = 0; i < 3 && result >= 0; ++i) {
    result = sd_bus_call_method_async(bus, nullptr, kSystemd, path.get(),
                                      "org.freedesktop.DBus.Properties", "Get", OnAnswer,
                                      &queries[i], "ss", properties[i][0], properties[i][1]);
    if (result >= 0) ++queries[i].answers->awaited;
  }
  return result;
}

}  // namespace

UnitsAnswer ReadUnits(const std::vector<std::string>& names, TimeBudget& budget,
                      std::vector<UnitState>& states, std::string& reason) {
  states.assign(names.size(), {});
  BusAnswers answers;
  std::vector<Query> queries;
  for (UnitState& state : states)
    for (std::string* value : {&state.load, &state.active, &state.reload})
      queries.push_back({&answers, value});
  const auto queue = [&](sd_bus* bus) {
    int result = 0;
    for (std::size_t i = 0; i < names.size() && result >= 0; ++i)
      result = QueueQueries(bus, names[i], &queries[i * 3]);
    return result;
  };
  return AskSystemd(queue, answers, budget, reason);
}

std::int64_t ReadInactiveSince(const std::string& unit, TimeBudget& budget) {
  TimeQuery query;
  std::string reason;
  const auto queue = [&](sd_bus* bus) {
    int result = 0;
    const Text path = EncodePath(unit, result);
    if (result >= 0)
      result = sd_bus_call_method_async(bus, nullptr, kSystemd, path.get(),
                                        "org.freedesktop.DBus.Properties", "Get", OnTime, &query,
                                        "ss", kUnit, "InactiveEnterTimestamp");
    query.answers.awaited = result >= 0 ? 1 : 0;
    return result;
  };
  AskSystemd(queue, query.answers, budget, reason);
  return static_cast<std::int64_t>(query.time / 1'000'000);
}

}  // namespace linux_platform
