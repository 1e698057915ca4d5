// Lets one thread wake another one that waits in poll.
#pragma once

namespace host {

class Wakeup {
 public:
  // Throws std::system_error when the system gives no more open files.
  Wakeup();
  ~Wakeup();
  Wakeup(const Wakeup&) = delete;
  Wakeup& operator=(const Wakeup&) = delete;

  // By any thread. poll finds the descriptor readable until Clear.
  void Wake();
  void Clear();
  int Descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace host
