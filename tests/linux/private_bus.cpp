#include "tests/linux/private_bus.h"

#include <fnmatch.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <set>

#include "tests/linux/eventually.h"

PrivateBus::PrivateBus(const TemporaryRoot& root)
    : address_("unix:path=" + (root.Path() / "run/dbus/system_bus_socket").string()) {
  const char* program = "/usr/bin/dbus-daemon";
  if (access(program, X_OK) != 0) return;
  std::filesystem::create_directories(root.Path() / "run/systemd/system");
  std::filesystem::create_directories(root.Path() / "run/dbus");
  std::string run = "exec " + std::string(program) +
                    " --nofork --config-file=" FIXTURES "/bus.conf" + " --address=" + address_ +
                    " 2>/dev/null";
  std::string shell = "sh", option = "-c";
  char* argv[] = {shell.data(), option.data(), run.data(), nullptr};
  if (posix_spawn(&daemon_, "/bin/sh", nullptr, nullptr, argv, environ) != 0) daemon_ = -1;
  systemd_ = std::thread([this] { Serve(); });
  Eventually([this] { return ready_.load(); });
}

PrivateBus::~PrivateBus() {
  stop_ = true;
  if (systemd_.joinable()) systemd_.join();
  if (daemon_ <= 0) return;
  kill(daemon_, SIGKILL);
  waitpid(daemon_, nullptr, 0);
}

void PrivateBus::Say(const std::string& unit, const std::string& property,
                     const std::string& value) {
  const std::lock_guard lock(mutex_);
  values_[unit + ' ' + property] = value;
}

int PrivateBus::Get(sd_bus*, const char* path, const char*, const char* property,
                    sd_bus_message* reply, void* self, sd_bus_error* error) {
  auto* bus = static_cast<PrivateBus*>(self);
  char* unit = nullptr;
  sd_bus_path_decode(path, "/org/freedesktop/systemd1/unit", &unit);
  const std::string key = std::string(unit) + ' ' + property;
  free(unit);
  const std::lock_guard lock(bus->mutex_);
  const auto found = bus->values_.find(key);
  const std::string value =
      found != bus->values_.end() ? found->second : SD_BUS_ERROR_UNKNOWN_INTERFACE;
  if (value.starts_with("org.freedesktop.DBus.Error."))
    return sd_bus_error_set(error, value.c_str(), "systemd says no");
  if (std::string_view(property) == "InactiveEnterTimestamp")
    return sd_bus_message_append(reply, "t", std::stoull(value));
  return sd_bus_message_append(reply, "s", value.c_str());
}

int PrivateBus::List(sd_bus_message* call, void* self, sd_bus_error*) {
  auto* bus = static_cast<PrivateBus*>(self);
  const char *state = nullptr, *pattern = nullptr;
  std::set<std::string> units;
  sd_bus_message_read(call, "as", 1, &state);
  sd_bus_message_enter_container(call, 'a', "s");
  const std::lock_guard lock(bus->mutex_);
  while (sd_bus_message_read(call, "s", &pattern) > 0)
    for (const auto& [key, value] : bus->values_)
      if (value == state &&
          fnmatch((pattern + std::string(" ActiveState")).c_str(), key.c_str(), 0) == 0)
        units.insert(key.substr(0, key.find(' ')));
  sd_bus_message* reply = nullptr;
  sd_bus_message_new_method_return(call, &reply);
  sd_bus_message_open_container(reply, 'a', "(ssssssouso)");
  for (const std::string& unit : units)
    sd_bus_message_append(reply, "(ssssssouso)", unit.c_str(), "", "", "", "", "", "/", 0U, "",
                          "/");
  sd_bus_message_close_container(reply);
  sd_bus_send(nullptr, reply, nullptr);
  sd_bus_message_unref(reply);
  return 1;
}

void PrivateBus::Serve() {
  constexpr const char *kUnits = "/org/freedesktop/systemd1/unit",
                       *kUnit = "org.freedesktop.systemd1.Unit",
                       *kService = "org.freedesktop.systemd1.Service";
  static const sd_bus_vtable unit[] = {
      SD_BUS_VTABLE_START(0), SD_BUS_PROPERTY("LoadState", "s", Get, 0, 0),
      SD_BUS_PROPERTY("ActiveState", "s", Get, 0, 0),
      SD_BUS_PROPERTY("InactiveEnterTimestamp", "t", Get, 0, 0), SD_BUS_VTABLE_END};
  static const sd_bus_vtable service[] = {
      SD_BUS_VTABLE_START(0), SD_BUS_PROPERTY("ReloadResult", "s", Get, 0, 0), SD_BUS_VTABLE_END};
  static const sd_bus_vtable manager[] = {
      SD_BUS_VTABLE_START(0),
      SD_BUS_METHOD("ListUnitsByPatterns", "asas", "a(ssssssouso)", List, 0), SD_BUS_VTABLE_END};
  sd_bus* bus = nullptr;
  ready_ = Eventually([&] {
    sd_bus_unref(bus);
    sd_bus_new(&bus);
    sd_bus_set_address(bus, address_.c_str());
    sd_bus_set_bus_client(bus, 1);
    sd_bus_add_fallback_vtable(bus, nullptr, kUnits, kUnit, unit, nullptr, this);
    sd_bus_add_fallback_vtable(bus, nullptr, kUnits, kService, service, nullptr, this);
    sd_bus_add_object_vtable(bus, nullptr, "/org/freedesktop/systemd1",
                             "org.freedesktop.systemd1.Manager", manager, this);
    return stop_ ||
           (sd_bus_start(bus) >= 0 && sd_bus_request_name(bus, "org.freedesktop.systemd1", 0) >= 0);
  });
  while (!stop_) {
    if (mute_)
      usleep(20'000);
    else if (sd_bus_process(bus, nullptr) == 0)
      sd_bus_wait(bus, 20'000);
  }
  sd_bus_close_unref(bus);
}
