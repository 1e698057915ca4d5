#include "host/operating_system.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/sysinfo.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>

#include "platform/simulator/simulator.h"

namespace {

const VELAOperatingSystem* simulated = nullptr;
constexpr int kNotSimulated = -2;

bool OnlyReads(int directory, int flags) {
  return directory == AT_FDCWD && (flags & (O_ACCMODE | O_CREAT)) == O_RDONLY;
}

}  // namespace

void vela::host::AnswerForOperatingSystem(const VELAOperatingSystem* answers) {
  simulated = answers;
}

extern "C" {

#pragma GCC visibility push(default)

int gethostname(char* name, std::size_t size) noexcept {
  if (simulated != nullptr) return simulated->gethostname(name, size);
  utsname machine = {};
  if (uname(&machine) != 0) return -1;
  std::strncpy(name, machine.nodename, size);
  if (std::strlen(machine.nodename) < size) return 0;
  errno = ENAMETOOLONG;
  return -1;
}

int sysinfo(struct sysinfo* record) noexcept {
  if (simulated != nullptr) return simulated->sysinfo(record);
  return static_cast<int>(syscall(SYS_sysinfo, record));
}

int openat(int directory, const char* path, int flags, ...) {
  mode_t mode = 0;
  if ((flags & (O_CREAT | O_TMPFILE)) != 0) {
    std::va_list arguments;
    va_start(arguments, flags);
    mode = va_arg(arguments, mode_t);
    va_end(arguments);
  }
  if (simulated != nullptr && OnlyReads(directory, flags)) {
    if (const int file = simulated->open(path); file != kNotSimulated) return file;
  }
  return static_cast<int>(syscall(SYS_openat, directory, path, flags, mode));
}

#pragma GCC visibility pop
}
