#include <syslog.h>

#include "common/log.h"

namespace VELA::SystemHealth {

void WriteSystemLog(int priority, const char* line) { syslog(priority, "%s", line); }

}  // namespace VELA::SystemHealth
