#include "host/http/wakeup.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace host {

Wakeup::Wakeup() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (descriptor_ < 0) throw std::system_error(errno, std::generic_category());
}

Wakeup::~Wakeup() { close(descriptor_); }

void Wakeup::Wake() { eventfd_write(descriptor_, 1); }

void Wakeup::Clear() {
  eventfd_t count = 0;
  eventfd_read(descriptor_, &count);
}

}  // namespace host
