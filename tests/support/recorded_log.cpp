#include "tests/support/recorded_log.h"

#include "module/base/log.h"

namespace VELA::SystemHealth {

std::vector<std::string>& RecordedLog() {
  thread_local std::vector<std::string> log;
  return log;
}

void WriteSystemLog(int priority, const char* line) {
  RecordedLog().push_back(std::to_string(priority) + " " + line);
}

}  // namespace VELA::SystemHealth
