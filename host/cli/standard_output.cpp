#include "host/cli/standard_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>

#include "host/cli/new_files.h"
#include "host/text/failure.h"

namespace host {
namespace {

// Some file systems tell only at the end that the disk is full. Closing a second descriptor asks,
// and leaves the first one open.
std::error_code Close(int file) {
  const int second = dup(file);
  if (second < 0 || close(second) == 0) return {};
  return {errno, std::generic_category()};
}

}  // namespace

void OccupyMissingStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (fcntl(stream, F_GETFD) < 0) open("/", O_PATH);  // the lowest free descriptor, so this one
  }
}

void WriteOutput(std::string_view text) {
  std::error_code error = WriteAll(STDOUT_FILENO, text);
  if (!error) error = Close(STDOUT_FILENO);
  if (!error || error == std::errc::broken_pipe) return;
  const bool closed = error == std::errc::bad_file_descriptor;
  throw Failure(kCannotWrite, "Cannot write the answer to standard output: " +
                                  (closed ? "it is closed" : error.message()) +
                                  ". Send it to where there is room for it.");
}

HeldOutput::HeldOutput() : stream_(std::cout.rdbuf(text_.rdbuf())) {}
HeldOutput::~HeldOutput() { std::cout.rdbuf(stream_); }

}  // namespace host
