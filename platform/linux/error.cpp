#include "platform/linux/error.h"

#include "velac.h"

namespace vela::linuxplatform {
namespace {

struct Record {
  Error error = Error::None;
  const char* file = "";
  int line = 0;
};
thread_local constinit Record last;

}  // namespace

void SetError(Error error, const char* file, int line) { last = {error, file, line}; }

}  // namespace vela::linuxplatform

using vela::linuxplatform::last;

unsigned VLIBCErrGet(void) { return static_cast<unsigned>(last.error); }
const char* VLIBCErrorGetFile(void) { return last.file; }
int VLIBCErrorGetLine(void) { return last.line; }
