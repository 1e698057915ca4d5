// How long this test's platform waits. Tests give it twenty times as long as what ships
// (CMakeLists.txt), for a daemon that a busy machine starves is no broken one; the usual time
// where something is meant to hang.
#pragma once

#include "platform/linux/base/deadline.h"

class TimeoutFactor {
 public:
  explicit TimeoutFactor(int factor) : before_(linux_platform::SetTimeoutFactor(factor)) {}
  ~TimeoutFactor() { linux_platform::SetTimeoutFactor(before_); }
  TimeoutFactor(const TimeoutFactor&) = delete;
  TimeoutFactor& operator=(const TimeoutFactor&) = delete;

 private:
  const int before_;
};
