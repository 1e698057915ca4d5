#include "platform/linux/base/deadline.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include "tests/linux/timeout_factor.h"

namespace {

using namespace linux_platform;
using namespace std::chrono_literals;
using std::chrono::steady_clock;

// Everything takes a hundred times as long, so that no busy machine comes near the bounds.
TEST(TimeBudget, AllWaitsOfARequestShareIt) {
  const TimeoutFactor hundredfold(100);
  const auto ends = [](TimeBudget& budget, auto bound, auto after) {
    const auto before = steady_clock::now();
    const auto deadline = budget.DeadlineFor(bound);
    EXPECT_GE(deadline, before + after - 10s) << bound.count();
    EXPECT_LE(deadline, steady_clock::now() + after) << bound.count();
  };
  TimeBudget fresh;
  ends(fresh, 1000ms, 100s);
  ends(fresh, 60s, 150s);
  EXPECT_TRUE(fresh.GrantsWholeTurn(1000ms));
  EXPECT_TRUE(fresh.GrantsWholeTurn(60s));
  TimeBudget waited(70s);
  ends(waited, 500ms, 50s);
  ends(waited, 60s, 80s);
  EXPECT_FALSE(waited.GrantsWholeTurn(1000ms));
  EXPECT_FALSE(waited.GrantsWholeTurn(60s));
  EXPECT_TRUE(waited.GrantsWholeTurn(500ms));
  TimeBudget spent(201s);
  EXPECT_LT(spent.DeadlineFor(1ms), steady_clock::now()) << "however long the request lasts";
}

// Without its lock a reader meets half a reason.
TEST(CircuitBreaker, IsReadWhileItIsTripped) {
  CircuitBreaker breaker(1h);
  const std::string reasons[] = {std::string(50'000, 'a'), std::string(60'000, 'b')};
  std::atomic<bool> done = false;
  std::thread tripping([&] {
    for (int i = 0; i < 20'000; ++i) breaker.Trip(reasons[i % 2]);
    done = true;
  });
  for (std::string reason; !done;) {
    if (!breaker.IsOpen(reason)) continue;
    const std::string told = reason.substr(0, reason.find(';'));
    EXPECT_TRUE(told == reasons[0] || told == reasons[1]) << told;
  }
  tripping.join();
}

TEST(CircuitBreaker, ClosesAfterItsPause) {
  const TimeoutFactor usual(1);
  CircuitBreaker breaker(1h), brief(1ms);
  std::string reason;
  EXPECT_FALSE(breaker.IsOpen(reason));
  breaker.Trip("it hung");
  EXPECT_TRUE(breaker.IsOpen(reason));
  EXPECT_EQ(reason, "it hung; it is left alone for 3600 s");
  brief.Trip("it hung");
  std::this_thread::sleep_for(2ms);
  EXPECT_FALSE(brief.IsOpen(reason));
  CircuitBreaker::CloseAll();
  EXPECT_FALSE(breaker.IsOpen(reason));
}

}  // namespace
