// A system bus of the test's own, with a systemd on it that says what it is told to.
#pragma once

#include <sys/types.h>

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
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  bool Runs() const { return daemon_ > 0; }
  // What systemd says of a unit's property: Say("nginx.service", "ActiveState", "failed"), or
  // the name of the D-Bus error that it answers with.
  void Say(const std::string& unit, const std::string& property, const std::string& value);
  // A systemd that takes questions and does not answer.
  void Mute(bool mute) { mute_ = mute; }
  void StopDaemon() const;
  void ContinueDaemon() const;
  int Questions() const { return questions_; }

 private:
  static int OnGet(void* message, void* self);
  void Serve(const std::string& address);

  pid_t daemon_ = -1;
  std::atomic<bool> stop_ = false, mute_ = false, ready_ = false;
  std::atomic<int> questions_ = 0;
  std::mutex mutex_;
  std::map<std::string, std::string> values_;  // by unit, blank, property
  std::thread systemd_;
};
