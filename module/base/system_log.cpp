#include <syslog.h>

#include "module/base/log.h"

namespace VELA::SystemHealth {

void WriteSystemLog(int priority, const char* line) { syslog(priority, "%s", line); }

}  // namespace VELA::SystemHealth
