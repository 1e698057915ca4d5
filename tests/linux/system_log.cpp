#include "tests/linux/system_log.h"

#include <syslog.h>

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

namespace {

std::mutex mutex;
std::vector<std::string> lines;

void Keep(int priority, const char* format, std::va_list arguments) {
  char text[1024];
  std::vsnprintf(text, sizeof text, format, arguments);
  const std::lock_guard lock(mutex);
  const char* name = priority == LOG_WARNING ? "warning "
                     : priority == LOG_DEBUG ? "debug "
                                             : "other ";
  lines.push_back(name + std::string(text));
}

}  // namespace

std::vector<std::string> TakeSystemLog() {
  const std::lock_guard lock(mutex);
  return std::exchange(lines, {});
}

// Found before the C library's by whatever is linked into this executable.
extern "C" __attribute__((visibility("default"))) void syslog(int priority, const char* format,
                                                              ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Keep(priority, format, arguments);
  va_end(arguments);
}
