// A source's troubles in the system log: only the first of a row.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "platform/linux/base/trouble.h"
#include "platform/status/source_status.h"

namespace linux_platform {

// One object a source, static. Any thread may call.
class LogOnce {
 public:
  // Static texts: what the log line begins with, "UPS", and the remedy of its failures.
  constexpr LogOnce(const char* what, const char* remedy) : what_(what), remedy_(remedy) {}

  // The source status hears every trouble; the system log, at warning priority, only the
  // first since the last Recovered(), and nothing of what its owner accepts. True: this is that
  // first one.
  bool Tell(source_status::SourceScope& scope, const Trouble& trouble);
  // The source was read, or is not there: its next failure is news again.
  void Recovered() { failing_.store(false, std::memory_order_relaxed); }
  // Tells the trouble; Recovered for none.
  void Report(source_status::SourceScope& scope, const Trouble& trouble);
  void Report(source_status::SourceScope& scope, const std::vector<Trouble>& troubles);

 private:
  const char *what_, *remedy_;
  std::atomic<bool> failing_ = false;
};

}  // namespace linux_platform
