#include "platform/simulator/memory_file.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace simulator {

MemoryFile& MemoryFile::operator=(const std::optional<std::string>& text) {
  text_ = text;
  if (file_ >= 0) close(file_);
  file_ = text_ ? memfd_create("simulated", MFD_CLOEXEC) : -1;
  if (file_ < 0) return *this;
  const ssize_t written = pwrite(file_, text_->data(), text_->size(), 0);
  if (written == static_cast<ssize_t>(text_->size())) return *this;
  close(file_);
  file_ = -1;
  return *this;
}

int MemoryFile::Open() const {
  if (file_ >= 0) return fcntl(file_, F_DUPFD_CLOEXEC, 0);
  errno = ENOENT;
  return -1;
}

}  // namespace simulator
