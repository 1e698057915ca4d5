#include "platform/linux/base/supervision.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/socket.h>
#include <unistd.h>

#include <climits>
#include <cstring>

#include "platform/linux/base/spawn.h"

namespace linux_platform {
namespace {

// The library or program that this code is in.
std::string FindOwnFile() {
  Dl_info info = {};
  link_map* map = nullptr;
  const void* here = reinterpret_cast<const void*>(&FindOwnFile);
  if (dladdr1(here, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) != 0 &&
      map != nullptr && map->l_name[0] != '\0')
    return map->l_name;
  std::string path(PATH_MAX, '\0');
  const ssize_t size = readlink("/proc/self/exe", path.data(), path.size());
  path.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
  return path;
}

// Beside the library, and where that is from the folder of the collector.
const std::string& FindSupervisor() {
  static const std::string found = [] {
    const std::string own = FindOwnFile();
    const std::string folder = own.substr(0, own.rfind('/') + 1);
    const std::string beside = folder + "vela-supervise";
    return access(beside.c_str(), X_OK) == 0 ? beside
                                             : folder + VELA_LIBRARIES_FROM_SBIN "/vela-supervise";
  }();
  return found;
}

}  // namespace

int StartSupervised(const std::vector<std::string>& arguments, std::chrono::milliseconds grace,
                    SupervisedOutput output, Descriptor& line, pid_t& pid, std::string& reason) {
  int ends[2];
  reason = arguments.at(0);
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return errno;
  line = Descriptor(ends[0]);
  const Descriptor far = AboveStandard(Descriptor(ends[1]));
  if (!far) return errno;
  std::string supervisor = FindSupervisor(), period = std::to_string(grace.count());
  std::vector<char*> argv = {supervisor.data(), period.data()};
  std::string join = kJoinErrors;
  if (output.joinsErrors) argv.push_back(join.data());
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  char path[] = "PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";
  char locale[] = "LC_ALL=C";
  char* const environment[] = {path, locale, nullptr};
  const SpawnSettings settings = {far.Get(), output.descriptor, true};
  const int error = Spawn(argv.data(), environment, settings, pid);
  if (error != 0) reason = supervisor;
  return error;
}

}  // namespace linux_platform
