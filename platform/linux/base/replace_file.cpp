#include "platform/linux/base/replace_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platform/linux/base/descriptor.h"

namespace linux_platform {
namespace {

bool WriteWhole(int file, const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t wrote = write(file, text.data() + done, text.size() - done);
    if (wrote < 0 && errno == EINTR) continue;
    if (wrote < 0) return false;
    done += static_cast<std::size_t>(wrote);
  }
  return true;
}

}  // namespace

bool ReplaceFile(const std::string& path, const std::string& text) {
  const std::size_t name = path.rfind('/') + 1;
  const std::string next = path.substr(0, name) + "." + path.substr(name) + ".new";
  constexpr int kFresh = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC;
  const Descriptor file(open(next.c_str(), kFresh, 0644));
  return file && WriteWhole(file.Get(), text) && fchmod(file.Get(), 0644) == 0 &&
         rename(next.c_str(), path.c_str()) == 0;
}

bool MakeFolder(const std::string& path) {
  if (mkdir(path.c_str(), 0755) == 0) return chmod(path.c_str(), 0755) == 0;
  struct stat status = {};
  if (errno != EEXIST || stat(path.c_str(), &status) != 0) return false;
  if (!S_ISDIR(status.st_mode)) {
    errno = ENOTDIR;
    return false;
  }
  return access(path.c_str(), W_OK) == 0;
}

}  // namespace linux_platform
