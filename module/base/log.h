// Lines for the system log: "<source>:<line> <message>".
#pragma once

namespace VELA::SystemHealth {

// Where a message says it comes from: the source less its extension, and a line.
// The line is part of the message: it stays when the code moves.
struct LogPosition {
  const char* source;
  int line;
};

void LogError(LogPosition position, const char* format, ...) __attribute__((format(printf, 2, 3)));
void LogDebug(LogPosition position, const char* format, ...) __attribute__((format(printf, 2, 3)));

// Writes one finished line at a syslog(3) priority. Tests put their own in its place.
void WriteSystemLog(int priority, const char* line);

}  // namespace VELA::SystemHealth
