// What the module writes to the system log while it answers.
#pragma once

#include <string>
#include <vector>

#include "platform/status/source_status.h"

namespace host {

// Keeps what this thread writes to the system log while it lives; the log gets it, too,
// sanitized. One at a time and thread.
class ModuleLog {
 public:
  ModuleLog();
  ~ModuleLog();
  ModuleLog(const ModuleLog&) = delete;
  ModuleLog& operator=(const ModuleLog&) = delete;

  const std::vector<std::string>& Lines() const { return lines_; }

 private:
  std::vector<std::string> lines_;
};

// A platform may have read a source well, and the module could not use what it said: of that
// only the log tells. Each such source counts as failed, with the log's words; host name and
// uptime, which are no platform's, as the source "operating system".
void AddLoggedFailures(const std::vector<std::string>& lines,
                       std::vector<VELASourceReport>& sources);

}  // namespace host
