#include "platform/linux/failure_log.h"

#include <syslog.h>

namespace vela::linuxplatform {

bool FailureLog::Failed(platform::SourceScope& scope, const std::string& reason) {
  scope.Failed("%s", reason.c_str());
  if (failing_.exchange(true, std::memory_order_relaxed)) return false;
  syslog(LOG_WARNING, "%s: %s (said once until it is read again)", what_, reason.c_str());
  return true;
}

}  // namespace vela::linuxplatform
