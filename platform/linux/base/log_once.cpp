#include "platform/linux/base/log_once.h"

#include <syslog.h>

#include "common/sanitize.h"

namespace linux_platform {

bool LogOnce::Tell(source_status::SourceScope& scope, const Trouble& trouble) {
  const char* reason = trouble.reason.c_str();
  if (trouble.unwatched)
    scope.Unwatched(trouble.remedy.c_str(), "%s", reason);
  else
    scope.Failed(remedy_, "%s", reason);
  if (trouble.unwatched && source_status::IsAccepted(scope.GetSource())) return false;
  if (failing_.exchange(true, std::memory_order_relaxed)) return false;
  syslog(LOG_WARNING, "%s: %s (said once until it is read again)", what_,
         common::Sanitize(trouble.reason).c_str());  // a daemon's reply may be part of it
  return true;
}

void LogOnce::Report(source_status::SourceScope& scope, const Trouble& trouble) {
  if (trouble.IsNone())
    Recovered();
  else
    Tell(scope, trouble);
}

void LogOnce::Report(source_status::SourceScope& scope, const std::vector<Trouble>& troubles) {
  for (const Trouble& trouble : troubles) Tell(scope, trouble);
  if (troubles.empty()) Recovered();
}

}  // namespace linux_platform
