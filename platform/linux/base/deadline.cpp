#include "platform/linux/base/deadline.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <utility>

namespace linux_platform {
namespace {

using std::chrono::milliseconds, std::chrono::seconds, std::chrono::steady_clock;

constexpr auto kPatience = milliseconds(1500);
constexpr auto kFairTurn = milliseconds(900);
constexpr auto kRequest = seconds(2);

thread_local constinit steady_clock::time_point firstWait = {};
std::atomic<int> generation = 0;

int& Times() {
  static int times = [] {
    const char* named = secure_getenv("VELA_PATIENCE");
    return std::clamp(named != nullptr ? std::atoi(named) : 1, 1, 100);
  }();
  return times;
}

}  // namespace

milliseconds Patient(milliseconds time) { return time * Times(); }

int SetPatience(int times) { return std::exchange(Times(), times); }

steady_clock::time_point WaitUntil(milliseconds bound) {
  const auto now = steady_clock::now();
  if (now - firstWait > Patient(kRequest)) firstWait = now;
  return std::min(now + Patient(bound), firstWait + Patient(kPatience));
}

bool IsWholeTurn(milliseconds bound) {
  const auto now = steady_clock::now();
  return WaitUntil(bound) - now >= Patient(std::min(bound, kFairTurn));
}

void NewRequest(milliseconds waited) {
  firstWait = waited.count() == 0 ? steady_clock::time_point() : steady_clock::now() - waited;
}

bool CircuitBreaker::IsOpen(std::string& reason) const {
  const std::lock_guard lock(mutex_);
  if (generation_ != generation || steady_clock::now() - tripped_ >= Patient(pause_)) return false;
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
