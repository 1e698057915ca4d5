#include "platform/linux/base/open.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <linux/openat2.h>

#include <array>
#include <cerrno>
#include <climits>

#include "platform/linux/base/root.h"

namespace linux_platform {
namespace {

// The rest of `path` when it lies below another root that is not trusted; else null.
const char* SkipRoot(const char* path) {
  const std::string& root = Root();
  if (root.empty() || TrustsRoot() || !std::string_view(path).starts_with(root)) return nullptr;
  path += root.size();
  if (*path != '/' && *path != '\0') return nullptr;
  while (*path == '/') ++path;
  return *path != '\0' ? path : ".";
}

Descriptor OpenBelow(const char* rest, int flags, std::uint64_t resolve) {
  const Descriptor root(open(Root().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!root) return Descriptor();
  open_how how = {};
  how.flags = static_cast<std::uint64_t>(flags | O_PATH | O_CLOEXEC);
  how.resolve = resolve | RESOLVE_NO_MAGICLINKS;
  // Any rename on the machine disturbs the kernel on its way through "..".
  for (int tries = 0;; ++tries) {
    const long opened = syscall(SYS_openat2, root.Get(), rest, &how, sizeof how);
    if (opened >= 0 || errno != EAGAIN || tries == 1000)
      return Descriptor(static_cast<int>(opened));
  }
}

std::string GetPathOf(const Descriptor& file) {
  return "/proc/self/fd/" + std::to_string(file.Get());
}

}  // namespace

Descriptor Open(const char* path, int flags) {
  const char* rest = SkipRoot(path);
  const int always = O_CLOEXEC | ((flags & O_PATH) != 0 ? 0 : O_NONBLOCK | O_NOCTTY);
  if (rest == nullptr) return Descriptor(open(path, flags | always));
  Descriptor place = OpenBelow(rest, flags & (O_DIRECTORY | O_NOFOLLOW), RESOLVE_IN_ROOT);
  if (!place || (flags & O_PATH) != 0) return place;
  struct stat status = {};
  if (fstat(place.Get(), &status) != 0) return Descriptor();
  if (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode))
    return Descriptor(open(GetPathOf(place).c_str(), (flags & ~O_NOFOLLOW) | always));
  errno = ENXIO;
  return Descriptor();
}

bool Access(const std::string& path, int mode) {
  if (SkipRoot(path.c_str()) == nullptr) return access(path.c_str(), mode) == 0;
  const Descriptor place = Open(path, O_PATH);
  return place && faccessat(place.Get(), "", mode, AT_EMPTY_PATH) == 0;
}

bool Stat(const std::string& path, struct stat& status) {
  if (SkipRoot(path.c_str()) == nullptr) return stat(path.c_str(), &status) == 0;
  const Descriptor place = Open(path, O_PATH);
  return place && fstat(place.Get(), &status) == 0;
}

std::string ReadLink(const std::string& path) {
  std::array<char, PATH_MAX> text;
  ssize_t size = -1;
  if (SkipRoot(path.c_str()) == nullptr) {
    size = readlink(path.c_str(), text.data(), text.size());
  } else if (const Descriptor link = Open(path, O_PATH | O_NOFOLLOW)) {
    size = readlinkat(link.Get(), "", text.data(), text.size());
    if (size < 0) errno = EINVAL;  // as readlink(2) says of what is no link
  }
  return {text.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
}

std::unique_ptr<DIR, CloseFolder> OpenFolder(const std::string& path) {
  if (SkipRoot(path.c_str()) == nullptr)  // two system calls fewer than of a descriptor
    return std::unique_ptr<DIR, CloseFolder>(opendir(path.c_str()));
  Descriptor folder = Open(path, O_RDONLY | O_DIRECTORY);
  std::unique_ptr<DIR, CloseFolder> opened(folder ? fdopendir(folder.Get()) : nullptr);
  if (opened) folder.Release();
  return opened;
}

Descriptor OpenForChange(const std::string& folder) {
  constexpr int kFolder = O_PATH | O_DIRECTORY | O_CLOEXEC;
  const char* rest = SkipRoot(folder.c_str());
  if (rest == nullptr) return Descriptor(open(folder.c_str(), kFolder));
  return OpenBelow(rest, kFolder, RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS);
}

}  // namespace linux_platform
