#include "platform/linux/services/failed_units.h"

#include <algorithm>
#include <memory>

#include "platform/linux/services/system_bus.h"

namespace linux_platform {
namespace {

using Message = std::unique_ptr<sd_bus_message, sd_bus_message* (*)(sd_bus_message*)>;

// A unit is its name, eight more texts and a number, which nobody wants here.
constexpr const char* kEntry = "ssssssouso";

struct Listing {
  BusAnswers answers;
  std::vector<std::string> names;
};

// No exception may cross sd-bus.
void Keep(const char* name, std::vector<std::string>& names) {
  try {
    names.emplace_back(name);
  } catch (const std::bad_alloc&) {
    names.clear();
  }
}

int OnListing(sd_bus_message* message, void* userdata, sd_bus_error*) {
  auto& listing = *static_cast<Listing*>(userdata);
  --listing.answers.awaited;
  if (sd_bus_message_enter_container(message, 'a', "(ssssssouso)") < 0) return 0;
  while (sd_bus_message_enter_container(message, 'r', kEntry) > 0) {
    const char* name = nullptr;
    if (sd_bus_message_read(message, "s", &name) < 0) break;
    Keep(name, listing.names);
    if (sd_bus_message_skip(message, kEntry + 1) < 0 || sd_bus_message_exit_container(message) < 0)
      break;
  }
  return 0;
}

int QueueListing(sd_bus* bus, const std::vector<std::string>& patterns, Listing& listing) {
  sd_bus_message* made = nullptr;
  int result =
      sd_bus_message_new_method_call(bus, &made, kSystemd, "/org/freedesktop/systemd1",
                                     "org.freedesktop.systemd1.Manager", "ListUnitsByPatterns");
  const Message message(made, sd_bus_message_unref);
  if (result >= 0) result = sd_bus_message_append(made, "as", 1, "failed");
  if (result >= 0) result = sd_bus_message_open_container(made, 'a', "s");
  for (std::size_t i = 0; i < patterns.size() && result >= 0; ++i)
    result = sd_bus_message_append(made, "s", patterns[i].c_str());
  if (result >= 0) result = sd_bus_message_close_container(made);
  if (result >= 0) result = sd_bus_call_async(bus, nullptr, made, OnListing, &listing, 0);
  if (result >= 0) ++listing.answers.awaited;
  return result;
}

}  // namespace

std::vector<std::string> ReadFailedUnits(const std::vector<std::string>& patterns,
                                         TimeBudget& budget) {
  Listing listing;
  std::string reason;
  AskSystemd([&](sd_bus* bus) { return QueueListing(bus, patterns, listing); }, listing.answers,
             budget, reason);
  std::ranges::sort(listing.names);
  return std::move(listing.names);
}

}  // namespace linux_platform
