// Runs a program without a shell and reads what it prints, within bounds.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "platform/linux/base/descriptor.h"

namespace linux_platform {

struct Bounds {
  std::chrono::milliseconds time;  // from the start to the end of the output
  std::size_t output;              // bytes
  bool joinsErrors = false;        // standard error is output, too
};

// A started program: leader of its own process group, with nothing on standard input,
// standard error dropped or joined, its environment PATH and LC_ALL=C only, every signal at its
// default, and no descriptor of this process but the pipe. The cost of starting it does
// not depend on the size of this process. Whatever it starts ends with it, and with this
// process, however it hides (supervision.h).
class Child {
 public:
  // `arguments[0]` is the program's path, taken as it is. On failure `Started()` is
  // false and `reason` says why.
  Child(const std::vector<std::string>& arguments, Bounds bounds, std::string& reason);
  // Ends what is left of it, within 200 ms: what a SIGKILL does not end by then sits in the
  // kernel, its supervisor waits for it and is reaped by a later Child; until then the
  // command is not started again.
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  bool Started() const { return pid_ > 0; }
  // As read(2), but never throws. At the first bound that is exceeded all is killed, the
  // output ends and `WasCut` says why.
  ssize_t Read(char* buffer, std::size_t size);
  enum class Cut { None, Late, Long };
  Cut WasCut() const { return cut_; }
  // Ends it as the destructor does. The program's wait status as waitpid(2) gives it; -1
  // when it is not known.
  int Finish();

 private:
  int AwaitStart();
  long TimeLeft() const;
  void EndNow();
  ssize_t CutOff(Cut cut);

  std::vector<std::string> command_;
  pid_t pid_ = -1;  // of the supervisor
  Descriptor output_, line_;
  std::chrono::steady_clock::time_point deadline_;
  Bounds bounds_;
  std::size_t delivered_ = 0;
  bool ended_ = false;
  Cut cut_ = Cut::None;
};

}  // namespace linux_platform
