// Many requests at once: each is answered about its own machine, as if it were alone.
#include <atomic>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/ask.h"
#include "tests/support/random_machine.h"

namespace VELA::SystemHealth {
namespace {

using simulator::Machine;
using simulator::RandomMachine;

constexpr unsigned kThreads = 8;
constexpr unsigned kRounds = 200;

bool OwesNothing(const Machine& machine) {
  return machine.ledger.lists == 0 && machine.ledger.streams == 0 && machine.ledger.objects == 0;
}

// Every thread asks every machine, each in an order of its own, so that one machine answers
// several threads at a time, too.
TEST(Threads, AnswersNeverMix) {
  std::vector<RandomMachine> machines;
  std::vector<std::string> alone;
  for (unsigned seed = 0; seed < kThreads * 2; ++seed)
    alone.push_back(Ask(machines.emplace_back(seed).machine));

  std::atomic<unsigned> mixed = 0;
  std::latch start(kThreads);
  const auto ask = [&](unsigned thread) {
    start.arrive_and_wait();
    for (unsigned round = 0; round < kRounds; ++round) {
      const std::size_t i = (round * (2 * thread + 1) + thread) % machines.size();
      if (Ask(machines[i].machine) != alone[i]) ++mixed;
    }
  };
  std::vector<std::jthread> threads;
  for (unsigned thread = 0; thread < kThreads; ++thread) threads.emplace_back(ask, thread);
  threads.clear();

  EXPECT_EQ(mixed, 0U);
  for (const RandomMachine& random : machines)
    EXPECT_TRUE(OwesNothing(random.machine)) << random.state;
}

}  // namespace
}  // namespace VELA::SystemHealth
