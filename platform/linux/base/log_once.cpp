#include "platform/linux/base/log_once.h"

#include <syslog.h>

#include "common/sanitize.h"

namespace linux_platform {

bool LogOnce::Failed(source_status::SourceScope& scope, const std::string& reason) {
  scope.Failed(remedy_, "%s", reason.c_str());
  if (failing_.exchange(true, std::memory_order_relaxed)) return false;
  syslog(LOG_WARNING, "%s: %s (said once until it is read again)", what_,
         common::Sanitize(reason).c_str());  // a daemon's reply may be part of it
  return true;
}

void LogOnce::Report(source_status::SourceScope& scope, const std::string& reason) {
  if (reason.empty())
    Recovered();
  else
    Failed(scope, reason);
}

}  // namespace linux_platform
