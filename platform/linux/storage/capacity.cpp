#include "platform/linux/storage/capacity.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>

#include <cerrno>

#include "platform/linux/base/descriptor.h"

namespace linux_platform {

bool ReadCapacity(const std::string& path, dev_t device, Capacity& capacity) {
  const Descriptor root(open(path.c_str(), O_PATH | O_CLOEXEC));
  struct stat status = {};
  struct statfs figures = {};
  if (!root || fstat(root.Get(), &status) != 0) return false;
  if (major(device) != 0 && status.st_dev != device) return errno = ENODEV, false;
  if (fstatfs(root.Get(), &figures) != 0) return false;
  const auto unit = static_cast<std::uint64_t>(figures.f_frsize);
  capacity.size = figures.f_blocks * unit;
  capacity.free = figures.f_bfree * unit;
  capacity.available = figures.f_bavail * unit;
  capacity.files = figures.f_files;
  capacity.freeFiles = figures.f_ffree;
  return true;
}

}  // namespace linux_platform
