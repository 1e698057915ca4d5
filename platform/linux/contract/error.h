// The calling thread's error record, read back through VLIBCErrGet and its fellows.
#pragma once

namespace linux_platform {

// The codes that appear in log lines as "0x%04X".
enum class Error : unsigned {
  None = 0x0000,
  BadArgument = 0x0D00,
  NoSuchFile = 0x0900,
  NoSuchKey = 0x0901,
  TooLong = 0x0902,     // a value does not fit into the caller's buffer
  FileUnread = 0x0903,  // there, but not to be read
  NotStarted = 0x0A00,  // a program could not be started
  Netlink = 0x0B00,
  NoSuchInterface = 0x0B01,
  SourceFailed = 0x0C00,  // a daemon, library or device did not answer
};

// Records `error` with the place that calls this, and returns -1, which most of the
// interface's functions then do, too. Keeps `errno` as it was.
int SetError(Error error, const char* file = __builtin_FILE(), int line = __builtin_LINE());

}  // namespace linux_platform
