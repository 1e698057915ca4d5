#include "host/loader/operating_system.h"

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

constexpr int kNotSimulated = -2;

int KernelHostName(char* name, std::size_t size) {
  utsname machine = {};
  if (uname(&machine) != 0) return -1;
  std::strncpy(name, machine.nodename, size);
  if (std::strlen(machine.nodename) < size) return 0;
  errno = ENAMETOOLONG;
  return -1;
}

int KernelSystemRecord(struct sysinfo* record) {
  return static_cast<int>(syscall(SYS_sysinfo, record));
}

int NoFile(const char*) { return kNotSimulated; }

constexpr VELAOperatingSystem kKernel = {KernelHostName, KernelSystemRecord, NoFile};
const VELAOperatingSystem* answers = &kKernel;

bool OnlyReads(int directory, int flags) {
  return directory == AT_FDCWD && (flags & (O_ACCMODE | O_CREAT)) == O_RDONLY;
}

}  // namespace

void host::UseOperatingSystem(const VELAOperatingSystem* given) {
  answers = given != nullptr ? given : &kKernel;
}

const VELAOperatingSystem* host::GetOperatingSystem() { return answers; }

extern "C" {

#pragma GCC visibility push(default)

int gethostname(char* name, std::size_t size) noexcept { return answers->gethostname(name, size); }

int sysinfo(struct sysinfo* record) noexcept { return answers->sysinfo(record); }

int openat(int directory, const char* path, int flags, ...) {
  mode_t mode = 0;
  if ((flags & (O_CREAT | O_TMPFILE)) != 0) {
    std::va_list arguments;
    va_start(arguments, flags);
    mode = va_arg(arguments, mode_t);
    va_end(arguments);
  }
  if (OnlyReads(directory, flags)) {
    if (const int file = answers->open(path); file != kNotSimulated) return file;
  }
  return static_cast<int>(syscall(SYS_openat, directory, path, flags, mode));
}

#pragma GCC visibility pop
}
