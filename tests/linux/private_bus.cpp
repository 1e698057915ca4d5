#include "tests/linux/private_bus.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include "tests/linux/eventually.h"

PrivateBus::PrivateBus(const TemporaryRoot& root) {
  const char* program = "/usr/bin/dbus-daemon";
  if (access(program, X_OK) != 0) return;
  std::filesystem::create_directories(root.Path() / "run/systemd/system");
  std::filesystem::create_directories(root.Path() / "run/dbus");
  const std::string address = "unix:path=" + (root.Path() / "run/dbus/system_bus_socket").string();
  const std::string config =
      root.Write("/bus.conf", "<busconfig><type>custom</type><listen>" + address +
                                  "</listen><auth>EXTERNAL</auth>"
                                  "<policy context='default'>"
                                  "<allow send_destination='*' eavesdrop='true'/>"
                                  "<allow eavesdrop='true'/><allow own='*'/>"
                                  "<allow user='*'/></policy></busconfig>");
  std::string arguments[] = {"dbus-daemon", "--nofork", "--config-file=" + config};
  char* argv[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(), nullptr};
  posix_spawn_file_actions_t quiet;
  posix_spawn_file_actions_init(&quiet);
  posix_spawn_file_actions_addopen(&quiet, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  if (posix_spawn(&daemon_, program, &quiet, nullptr, argv, environ) != 0) daemon_ = -1;
  posix_spawn_file_actions_destroy(&quiet);
  systemd_ = std::thread([this, address] { Serve(address); });
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

void PrivateBus::StopDaemon() const { kill(daemon_, SIGSTOP); }
void PrivateBus::ContinueDaemon() const { kill(daemon_, SIGCONT); }

int PrivateBus::OnGet(void* question, void* self) {
  auto* message = static_cast<sd_bus_message*>(question);
  auto* bus = static_cast<PrivateBus*>(self);
  const char *interface = nullptr, *property = nullptr;
  char* unit = nullptr;
  if (sd_bus_message_read(message, "ss", &interface, &property) < 0) return 0;
  ++bus->questions_;
  if (bus->mute_) return 1;
  sd_bus_path_decode(sd_bus_message_get_path(message), "/org/freedesktop/systemd1/unit", &unit);
  const std::string key = std::string(unit != nullptr ? unit : "") + ' ' + property;
  free(unit);
  const std::lock_guard lock(bus->mutex_);
  const auto found = bus->values_.find(key);
  if (found != bus->values_.end() && found->second.starts_with("org.freedesktop.DBus.Error."))
    return sd_bus_reply_method_errorf(message, found->second.c_str(), "systemd says no");
  if (found != bus->values_.end())
    return sd_bus_reply_method_return(message, "v", "s", found->second.c_str());
  if (std::string(property) == "ReloadResult")
    return sd_bus_reply_method_errorf(message, SD_BUS_ERROR_UNKNOWN_INTERFACE, "no service");
  const bool load = std::string(property) == "LoadState";
  return sd_bus_reply_method_return(message, "v", "s", load ? "not-found" : "inactive");
}

void PrivateBus::Serve(const std::string& address) {
  sd_bus* bus = nullptr;
  ready_ = Eventually([&] {
    sd_bus_unref(bus);
    sd_bus_new(&bus);
    sd_bus_set_address(bus, address.c_str());
    sd_bus_set_bus_client(bus, 1);
    return stop_ ||
           (sd_bus_start(bus) >= 0 && sd_bus_request_name(bus, "org.freedesktop.systemd1", 0) >= 0);
  });
  const auto onMessage = [](sd_bus_message* message, void* self, sd_bus_error*) {
    if (!sd_bus_message_is_method_call(message, "org.freedesktop.DBus.Properties", "Get")) return 0;
    return OnGet(message, self);
  };
  sd_bus_add_fallback(bus, nullptr, "/org/freedesktop/systemd1/unit", onMessage, this);
  while (!stop_) {
    const int did = sd_bus_process(bus, nullptr);
    if (did < 0) break;
    if (did == 0) sd_bus_wait(bus, 20'000);
  }
  sd_bus_close_unref(bus);
}
