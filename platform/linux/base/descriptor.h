// A file descriptor that closes itself and leaves errno alone.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace linux_platform {

class Descriptor {
 public:
  explicit Descriptor(int descriptor = -1) : descriptor_(descriptor) {}
  Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~Descriptor() {
    const int kept = errno;
    if (descriptor_ >= 0) close(descriptor_);
    errno = kept;
  }

  explicit operator bool() const { return descriptor_ >= 0; }
  int Get() const { return descriptor_; }
  // Somebody else closes it.
  int Release() { return std::exchange(descriptor_, -1); }

 private:
  int descriptor_;
};

}  // namespace linux_platform
