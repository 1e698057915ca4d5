// The C library's part of the simulated machine: an executable that exports these three is
// asked before libc, by the module too.
#include <cstdarg>

#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include "platform/simulator/simulator.h"

#pragma GCC visibility push(default)

extern "C" {

int gethostname(char* name, size_t size) noexcept {
  return VELAPlatformOperatingSystem()->gethostname(name, size);
}

int sysinfo(struct sysinfo* record) noexcept {
  return VELAPlatformOperatingSystem()->sysinfo(record);
}

int openat(int folder, const char* path, int flags, ...) {
  const int simulated = VELAPlatformOperatingSystem()->open(path);
  if (simulated != -2) return simulated;
  std::va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return static_cast<int>(syscall(SYS_openat, folder, path, flags, mode));
}
}

#pragma GCC visibility pop
