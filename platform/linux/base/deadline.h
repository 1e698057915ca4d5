// How long a request may wait, and for whom: what keeps one answer under two seconds when
// every daemon of the machine hangs at once.
#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <string>

namespace linux_platform {

// `time` as long as this process takes it: the same, unless VELA_TIMEOUT_FACTOR in the
// environment says how many times longer everything may wait. That is for tests on a busy
// machine, which starves healthy daemons, too, and for emulated ones.
std::chrono::milliseconds TimesFactor(std::chrono::milliseconds time);

// For tests: the factor from now on, 1 to 100; what it was before. Not while another thread asks.
int SetTimeoutFactor(int factor);

// What one request may wait in all: 1.5 s, which begin with its first wait.
class TimeBudget {
 public:
  TimeBudget() = default;
  // For tests: the budget of a request that began to wait so long ago.
  explicit TimeBudget(std::chrono::milliseconds waited)
      : firstWait_(std::chrono::steady_clock::now() - waited) {}

  // The moment until which to wait for a source that deserves `bound`.
  std::chrono::steady_clock::time_point DeadlineFor(std::chrono::milliseconds bound);
  // Whether a wait that begins now gets its `bound`, or nine tenths of a second. A source that
  // is silent for less was not given its turn: that proves nothing against it.
  bool GrantsWholeTurn(std::chrono::milliseconds bound);

 private:
  std::optional<std::chrono::steady_clock::time_point> firstWait_;
};

// Remembers that a source ran into its deadline, so that it costs one time-out in
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
