#include "platform/linux/base/deadline.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <utility>

namespace linux_platform {
namespace {

using std::chrono::milliseconds, std::chrono::seconds, std::chrono::steady_clock;

constexpr auto kTimeBudget = milliseconds(1500);
constexpr auto kWholeTurn = milliseconds(900);

std::atomic<int> generation = 0;

int& TimeoutFactor() {
  static int factor = [] {
    const char* named = secure_getenv("VELA_TIMEOUT_FACTOR");
    return std::clamp(named != nullptr ? std::atoi(named) : 1, 1, 100);
  }();
  return factor;
}

}  // namespace

milliseconds TimesFactor(milliseconds time) { return time * TimeoutFactor(); }

int SetTimeoutFactor(int factor) { return std::exchange(TimeoutFactor(), factor); }

steady_clock::time_point TimeBudget::DeadlineFor(milliseconds bound) {
  const auto now = steady_clock::now();
  if (!firstWait_) firstWait_ = now;
  return std::min(now + TimesFactor(bound), *firstWait_ + TimesFactor(kTimeBudget));
}

bool TimeBudget::GrantsWholeTurn(milliseconds bound) {
  const auto now = steady_clock::now();
  return DeadlineFor(bound) - now >= TimesFactor(std::min(bound, kWholeTurn));
}

bool CircuitBreaker::IsOpen(std::string& reason) const {
  const std::lock_guard lock(mutex_);
  if (generation_ != generation || steady_clock::now() - tripped_ >= TimesFactor(pause_))
    return false;
  reason = *reason_ + "; it is left alone for " +
           std::to_string(std::chrono::duration_cast<seconds>(pause_).count()) + " s";
  return true;
}

void CircuitBreaker::Trip(const std::string& reason) {
  const std::lock_guard lock(mutex_);
  tripped_ = steady_clock::now();
  generation_ = generation;
  reason_ = reason;
}

void CircuitBreaker::CloseAll() { ++generation; }

}  // namespace linux_platform
