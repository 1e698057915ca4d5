#include "platform/linux/base/deadline.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/linux/times_patient.h"

namespace {

using namespace linux_platform;
using namespace std::chrono_literals;
using std::chrono::steady_clock;

// Everything takes a hundred times as long, so that no busy machine comes near the bounds.
TEST(Patience, AllWaitsOfARequestShareOneBudget) {
  const TimesPatient hundredfold(100);
  const auto ends = [](auto bound, auto after) {
    const auto before = steady_clock::now();
    const auto until = WaitUntil(bound);
    EXPECT_GE(until, before + after - 10s) << bound.count();
    EXPECT_LE(until, steady_clock::now() + after) << bound.count();
  };
  NewRequest();
  ends(1000ms, 100s);
  ends(60s, 150s);
  EXPECT_TRUE(IsWholeTurn(1000ms));
  EXPECT_TRUE(IsWholeTurn(60s));
  NewRequest(70s);
  ends(500ms, 50s);
  ends(60s, 80s);
  EXPECT_FALSE(IsWholeTurn(1000ms));
  EXPECT_FALSE(IsWholeTurn(60s));
  EXPECT_TRUE(IsWholeTurn(500ms));
  NewRequest(201s);
  ends(60s, 150s);
}

TEST(Patience, ABreakerClosesAfterItsPause) {
  const TimesPatient usual(1);
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
