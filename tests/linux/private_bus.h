// A system bus of the test's own, with a systemd on it that says what it is told to.
#pragma once

#include <signal.h>
#include <sys/types.h>
#include <systemd/sd-bus.h>

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "tests/linux/temporary_root.h"

class PrivateBus {
 public:
  // Starts dbus-daemon below `root`; `Runs()` is false when there is none on this machine.
  explicit PrivateBus(const TemporaryRoot& root);
  ~PrivateBus();

  bool Runs() const { return daemon_ > 0; }
  // What systemd says of a unit's property: Say("nginx.service", "ActiveState", "failed"), or
  // the name of the D-Bus error that it answers with, as it does of all else.
  void Say(const std::string& unit, const std::string& property, const std::string& value);
  // From now on systemd answers nothing.
  void Mute() { mute_ = true; }
  void StopDaemon() const { kill(daemon_, SIGSTOP); }

 private:
  // Lists the units that were said to be in one of the states and match one of the patterns.
  static int List(sd_bus_message* call, void* self, sd_bus_error*);
  static int Get(sd_bus*, const char* path, const char*, const char* property,
                 sd_bus_message* reply, void* self, sd_bus_error* error);
  void Serve();

  const std::string address_;
  pid_t daemon_ = -1;
  std::atomic<bool> stop_ = false, mute_ = false, ready_ = false;
  std::mutex mutex_;
  std::map<std::string, std::string> values_;  // by unit, blank, property
  std::thread systemd_;
};
