// How long a request may wait, and for whom: what keeps one answer under two seconds when
// every daemon of the machine hangs at once.
#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <string>

namespace linux_platform {

// A time that the code names, as long as this process takes it: the same, unless VELA_PATIENCE in
// the environment says how many times longer everything may wait. That is for tests on a busy
// machine, which starves healthy daemons, too, and for emulated ones.
std::chrono::milliseconds Patient(std::chrono::milliseconds time);

// For tests: how many times longer from now on; what it was before. Not while another thread asks.
int SetPatience(int times);

// The moment until which the calling thread may wait for a source that deserves `bound`.
// All waits of one request end within 1.5 s of its first; a thread's wait that begins
// more than 2 s after that first one belongs to another request.
std::chrono::steady_clock::time_point WaitUntil(std::chrono::milliseconds bound);

// Whether a wait that begins now gets its `bound`, or nine tenths of a second. A source that is
// silent for less was not given its turn: that proves nothing against it.
bool IsWholeTurn(std::chrono::milliseconds bound);

// The calling thread's next wait is the first of a request, or, for tests, of one that has waited
// so long already.
void NewRequest(std::chrono::milliseconds waited = {});

// Remembers that a source ran into its time bound, so that it costs one time-out in
// thirty seconds and not one a request. One object a source, static; any thread may call.
class CircuitBreaker {
 public:
  explicit constexpr CircuitBreaker(std::chrono::milliseconds pause = std::chrono::seconds(30))
      : pause_(pause) {}

  // True: leave the source alone; `reason` says what it did.
  bool IsOpen(std::string& reason) const;
  void Trip(const std::string& reason);

  // For tests: no breaker is open any more.
  static void CloseAll();

 private:
  const std::chrono::milliseconds pause_;
  mutable std::mutex mutex_;
  std::chrono::steady_clock::time_point tripped_ = {};
  std::optional<std::string> reason_;  // a string itself is no constant for clang
  int generation_ = -1;
};

}  // namespace linux_platform
