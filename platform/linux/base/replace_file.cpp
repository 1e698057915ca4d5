#include "platform/linux/base/replace_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/base/open.h"

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

// A path in two: the folder, to change it, and a name.
struct Place {
  explicit Place(const std::string& path)
      : name(path.substr(path.rfind('/') + 1)),
        folder(OpenForChange(name == path ? "." : path.substr(0, path.size() - name.size()))) {}
  std::string name;
  Descriptor folder;
};

}  // namespace

// The name of the new file may be taken, by somebody who hopes that we write through it.
bool ReplaceFile(const std::string& path, const std::string& text) {
  const Place place(path);
  const std::string next = "." + place.name + ".new";
  const int folder = place.folder.Get();
  if (!place.folder || (unlinkat(folder, next.c_str(), 0) != 0 && errno != ENOENT)) return false;
  constexpr int kFresh = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  const Descriptor file(openat(folder, next.c_str(), kFresh, 0644));
  return file && WriteWhole(file.Get(), text) && fchmod(file.Get(), 0644) == 0 &&
         renameat(folder, next.c_str(), folder, place.name.c_str()) == 0;
}

bool RemoveFile(const std::string& path) {
  const Place place(path);
  return (place.folder && unlinkat(place.folder.Get(), place.name.c_str(), 0) == 0) ||
         errno == ENOENT;
}

bool MakeFolder(const std::string& path, mode_t mode) {
  const Place place(path);
  if (!place.folder) return false;
  const bool isNew = mkdirat(place.folder.Get(), place.name.c_str(), mode) == 0;
  if (!isNew && errno != EEXIST) return false;
  const Descriptor made = OpenForChange(path);
  if (!made) return false;
  if (isNew && fchmodat(made.Get(), ".", mode, 0) != 0) return false;
  return faccessat(made.Get(), ".", W_OK, 0) == 0;
}

// Looked at before it is opened, as a device's node acts on being opened, and afterwards, as
// another may have come in between.
Descriptor OpenLock(const std::string& path) {
  const Place place(path);
  const int folder = place.folder.Get();
  struct stat status = {};
  const auto isOwn = [&status] {
    return S_ISREG(status.st_mode) && status.st_nlink == 1 && status.st_uid == geteuid();
  };
  const bool isThere = fstatat(folder, place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
  if (isThere && !isOwn()) return Descriptor();
  constexpr int kLock = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  Descriptor file(openat(folder, place.name.c_str(), kLock, 0600));
  if (!file || fstat(file.Get(), &status) != 0 || !isOwn()) return Descriptor();
  return file;
}

}  // namespace linux_platform
