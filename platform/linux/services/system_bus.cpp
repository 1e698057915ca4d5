#include "platform/linux/services/system_bus.h"

#include <fcntl.h>
#include <unistd.h>

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
constexpr auto kBound = milliseconds(500);

constinit CircuitBreaker breaker;

using Bus = std::unique_ptr<sd_bus, sd_bus* (*)(sd_bus*)>;

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

// 0 when every answer is there, -ETIMEDOUT at the deadline, else sd-bus's error.
int Drive(sd_bus* bus, const BusAnswers& answers, steady_clock::time_point deadline) {
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

void AssignText(std::string& to, const char* text) {
  try {
    to = text != nullptr ? text : "";
  } catch (const std::bad_alloc&) {
    to.clear();
  }
}

UnitsAnswer AskSystemd(const std::function<int(sd_bus*)>& queue, const BusAnswers& answers,
                       TimeBudget& budget, std::string& reason) {
  if (!Access(BelowRoot(kBooted), F_OK)) {
    reason = "systemd does not run this machine";
    return UnitsAnswer::NoSystemd;
  }
  if (breaker.IsOpen(reason)) return UnitsAnswer::Late;
  const bool wholeTurn = budget.GrantsWholeTurn(kBound);
  const auto deadline = budget.DeadlineFor(kBound);
  Bus bus(nullptr, sd_bus_close_unref);
  int result = Connect(bus);
  if (result >= 0) result = queue(bus.get());
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
