#include "module/base/log.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string>

#include <syslog.h>

namespace VELA::SystemHealth {
namespace {

void Log(int priority, LogPosition position, const char* format, std::va_list arguments) {
  std::array<char, 512> brief;
  const int prefix =
      std::snprintf(brief.data(), brief.size(), "%s:%d ", position.source, position.line);
  const auto start = static_cast<std::size_t>(prefix);

  std::va_list again;
  va_copy(again, arguments);
  const int message = std::vsnprintf(brief.data() + start, brief.size() - start, format, arguments);
  const std::size_t length = start + static_cast<std::size_t>(message);
  if (length < brief.size()) {
    WriteSystemLog(priority, brief.data());
  } else {
    std::string line(brief.data(), start);
    line.resize(length);
    std::vsnprintf(line.data() + start, length - start + 1, format, again);
    WriteSystemLog(priority, line.c_str());
  }
  va_end(again);
}

}  // namespace

void LogError(LogPosition position, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Log(LOG_ERR, position, format, arguments);
  va_end(arguments);
}

void LogDebug(LogPosition position, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Log(LOG_DEBUG, position, format, arguments);
  va_end(arguments);
}

}  // namespace VELA::SystemHealth
