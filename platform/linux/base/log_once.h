// A source's failures in the system log: only the first of a row.
#pragma once

#include <atomic>
#include <string>

#include "platform/status/source_status.h"

namespace linux_platform {

// One object a source, static. Any thread may call.
class FailureLog {
 public:
  // `what` is static text that the log line begins with: "UPS".
  explicit constexpr FailureLog(const char* what) : what_(what) {}

  // The second voice hears every failure; the system log, at warning priority, only the
  // first since the last Fine(). True: this is that first one.
  bool Failed(source_status::SourceScope& scope, const std::string& reason);
  // The source was read, or is not there: its next failure is news again.
  void Fine() { failing_.store(false, std::memory_order_relaxed); }

 private:
  const char* what_;
  std::atomic<bool> failing_ = false;
};

}  // namespace linux_platform
