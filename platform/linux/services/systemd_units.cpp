// sd-bus, without any of its synchronous calls: their time-out does not hold while the
// connection is being made, so a stopped bus blocks them for 90 s. Everything is queued
// at once and driven under a deadline of our own.
#include "platform/linux/services/systemd_units.h"

#include <fcntl.h>
#include <unistd.h>

#include <systemd/sd-bus.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>

#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"

namespace linux_platform {
namespace {

using std::chrono::milliseconds, std::chrono::microseconds, std::chrono::steady_clock;

constexpr const char* kBooted = "/run/systemd/system";  // there when systemd runs the machine
constexpr const char* kSocket = "/run/dbus/system_bus_socket";
constexpr const char* kSystemd = "org.freedesktop.systemd1";
constexpr const char* kUnit = "org.freedesktop.systemd1.Unit";
constexpr const char* kService = "org.freedesktop.systemd1.Service";
constexpr auto kBound = milliseconds(500);

constinit CircuitBreaker breaker;

using Bus = std::unique_ptr<sd_bus, sd_bus* (*)(sd_bus*)>;

// Where the answers go; outlives the connection that fills it.
struct Answers {
  int awaited = 0;
  std::string error;
};
struct Query {
  Answers* answers;
  std::string* value;
};

// No exception may cross sd-bus: a text that finds no memory is left empty.
void Assign(std::string& to, const char* text) {
  try {
    to = text != nullptr ? text : "";
  } catch (const std::bad_alloc&) {
    to.clear();
  }
}

int OnAnswer(sd_bus_message* message, void* userdata, sd_bus_error*) {
  const auto& query = *static_cast<const Query*>(userdata);
  --query.answers->awaited;
  if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
    // A unit of another kind has no reload.
    if (strcmp(error->name, SD_BUS_ERROR_UNKNOWN_PROPERTY) == 0 ||
        strcmp(error->name, SD_BUS_ERROR_UNKNOWN_INTERFACE) == 0)
      return 0;
    Assign(query.answers->error, error->message != nullptr ? error->message : error->name);
    return 0;
  }
  const char* text = nullptr;
  const int read = sd_bus_message_read(message, "v", "s", &text);
  Assign(read < 0 ? query.answers->error : *query.value, read < 0 ? strerror(-read) : text);
  return 0;
}

int Connect(Bus& bus) {
  sd_bus* made = nullptr;
  int result = sd_bus_new(&made);
  if (result < 0) return result;
  bus.reset(made);
  Descriptor socket;  // by whose number the library follows no link of another root
  std::string path = kSocket;
  if (!Root().empty()) {
    socket = Open(BelowRoot(kSocket), O_PATH);
    if (!socket) return -errno;
    path = "/proc/self/fd/" + std::to_string(socket.Get());
  }
  const std::string address = "unix:path=" + path;
  if (result = sd_bus_set_address(made, address.c_str()); result < 0) return result;
  if (result = sd_bus_set_bus_client(made, 1); result < 0) return result;
  return sd_bus_start(made);
}

// Queues the three queries about one unit.
int QueueQueries(sd_bus* bus, const std::string& unit, Query* queries) {
  char* path = nullptr;
  int result = sd_bus_path_encode("/org/freedesktop/systemd1/unit", unit.c_str(), &path);
  const std::unique_ptr<char, void (*)(void*)> owned(path, free);
  const char* const properties[][2] = {
      {kUnit, "LoadState"}, {kUnit, "ActiveState"}, {kService, "ReloadResult"}};
  for (std::size_t i = 0; i < 3 && result >= 0; ++i) {
    result = sd_bus_call_method_async(bus, nullptr, kSystemd, path,
                                      "org.freedesktop.DBus.Properties", "Get", OnAnswer,
                                      &queries[i], "ss", properties[i][0], properties[i][1]);
    if (result >= 0) ++queries[i].answers->awaited;
  }
  return result;
}

// 0 when every answer is there, -ETIMEDOUT at the deadline, else sd-bus's error.
int Drive(sd_bus* bus, const Answers& answers, steady_clock::time_point deadline) {
  while (answers.awaited > 0) {
    const int result = sd_bus_process(bus, nullptr);
    if (result < 0) return result;
    if (result > 0) continue;
    const auto left = std::chrono::duration_cast<microseconds>(deadline - steady_clock::now());
    if (left.count() <= 0) return -ETIMEDOUT;
    const int waited = sd_bus_wait(bus, static_cast<std::uint64_t>(left.count()));
    if (waited < 0 && waited != -EINTR) return waited;
  }
  return 0;
}

}  // namespace

UnitsAnswer ReadUnits(const std::vector<std::string>& names, TimeBudget& budget,
                      std::vector<UnitState>& states, std::string& reason) {
  if (!Access(BelowRoot(kBooted), F_OK)) {
    reason = "systemd does not run this machine";
    return UnitsAnswer::NoSystemd;
  }
  if (breaker.IsOpen(reason)) return UnitsAnswer::Late;
  const bool wholeTurn = budget.GrantsWholeTurn(kBound);
  const auto deadline = budget.DeadlineFor(kBound);
  states.assign(names.size(), {});
  Answers answers;
  std::vector<Query> queries;
  for (UnitState& state : states)
    for (std::string* value : {&state.load, &state.active, &state.reload})
      queries.push_back({&answers, value});

  Bus bus(nullptr, sd_bus_close_unref);
  int result = Connect(bus);
  for (std::size_t i = 0; i < names.size() && result >= 0; ++i)
    result = QueueQueries(bus.get(), names[i], &queries[i * 3]);
  if (result >= 0) result = Drive(bus.get(), answers, deadline);
  if (result == -ETIMEDOUT) {
    reason = "the system bus or systemd did not answer in time";
    if (wholeTurn) breaker.Trip(reason);
    return UnitsAnswer::Late;
  }
  if (result >= 0 && answers.error.empty()) return UnitsAnswer::Read;
  reason = "systemd could not be asked over the system bus: " +
           (result < 0 ? std::string(strerror(-result)) : answers.error);
  return UnitsAnswer::Failed;
}

}  // namespace linux_platform
