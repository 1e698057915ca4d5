#include "platform/linux/contract/error.h"

#include "velac.h"

namespace linux_platform {
namespace {

struct Record {
  Error error = Error::None;
  const char* file = "";
  int line = 0;
};
thread_local constinit Record last;

}  // namespace

int SetError(Error error, const char* file, int line) {
  last = {error, file, line};
  return -1;
}

}  // namespace linux_platform

using linux_platform::last;

unsigned VLIBCErrGet(void) { return static_cast<unsigned>(last.error); }
const char* VLIBCErrorGetFile(void) { return last.file; }
int VLIBCErrorGetLine(void) { return last.line; }
