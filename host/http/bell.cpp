#include "host/http/bell.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include "host/text/failure.h"

namespace host {

Bell::Bell() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (descriptor_ < 0) {
    throw Failure(kUnavailable,
                  "Cannot start the web server: the system gives no more open files. Close other "
                  "programs and try again.");
  }
}

Bell::~Bell() { close(descriptor_); }

void Bell::Ring() const { eventfd_write(descriptor_, 1); }

void Bell::Hush() const {
  eventfd_t rung = 0;
  eventfd_read(descriptor_, &rung);
}

}  // namespace host
