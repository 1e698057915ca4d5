#include "platform/linux/patience.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace vela::linuxplatform;
using namespace std::chrono_literals;
using std::chrono::steady_clock;

TEST(Patience, AllWaitsOfARequestShareOneBudget) {
  NewRequest();
  const auto start = steady_clock::now();
  EXPECT_LE(WaitUntil(1000ms) - start, 1100ms);
  EXPECT_GE(WaitUntil(1000ms) - start, 1000ms);
  EXPECT_LE(WaitUntil(60s) - start, 1600ms);
  EXPECT_TRUE(IsWholeTurn(1000ms));
  EXPECT_TRUE(IsWholeTurn(60s));
  std::this_thread::sleep_for(650ms);
  EXPECT_FALSE(IsWholeTurn(1000ms));
  EXPECT_FALSE(IsWholeTurn(60s));
  EXPECT_TRUE(IsWholeTurn(500ms));
  NewRequest();
  EXPECT_GE(WaitUntil(60s) - start, 2140ms);
}

TEST(Patience, ABreakerClosesAfterItsPause) {
  CircuitBreaker breaker(100ms);
  std::string reason;
  EXPECT_FALSE(breaker.IsOpen(reason));
  breaker.Trip("it hung");
  EXPECT_TRUE(breaker.IsOpen(reason));
  EXPECT_EQ(reason, "it hung; it is left alone for 0 s");
  std::this_thread::sleep_for(110ms);
  EXPECT_FALSE(breaker.IsOpen(reason));
}

}  // namespace
