// The standard descriptors: taken from the start, and what was printed arrived.
#pragma once

#include <sstream>
#include <streambuf>
#include <string_view>

namespace host {

// Nothing that is opened later becomes descriptor 0, 1 or 2: those that are missing are taken by
// one on which reading and writing fails as before. Call it before anything is opened.
void OccupyMissingStreams();

// All of it, to standard output. Throws Failure(kCannotWrite); not when the reader has gone, as
// `head` does: that one has seen enough.
void WriteOutput(std::string_view text);

// Holds back what is printed to std::cout: an answer arrives whole, once its command has come to
// its end, or not at all.
class HeldOutput {
 public:
  HeldOutput();
  ~HeldOutput();
  HeldOutput(const HeldOutput&) = delete;
  HeldOutput& operator=(const HeldOutput&) = delete;

  void Write() const { WriteOutput(text_.view()); }

 private:
  std::ostringstream text_;
  std::streambuf* stream_;
};

}  // namespace host
