// What holds for every machine, tried on machines at random.
#include <algorithm>
#include <atomic>
#include <clocale>
#include <locale>
#include <thread>

#include "SystemChecker/checker_table.h"
#include "SystemChecker/system_checker_handler.h"
#include "tests/support/comma_locale.h"
#include "tests/support/random_machine.h"
#include "tests/support/simulated_test.h"

namespace VELA::SystemHealth {
namespace {

using simulator::Faults;
using simulator::Machine;
using simulator::MakeWorse;
using simulator::RandomMachine;

constexpr unsigned kMachines = simulator::kRandomMachines;

class Laws : public SimulatedTest {
 protected:
  CheckerRule Verdict(const Machine& machine) {
    Simulated() = machine;
    return SystemCheckerHandler().Check(SystemInfoHandler());
  }
};

TEST_F(Laws, TheSmallestPriorityWinsAndTheEarlierCheckerOnATie) {
  std::ptrdiff_t ties = 0;
  const auto expectTheLaw = [&](const Machine& machine) {
    Simulated() = machine;
    const SystemInfoHandler info;
    std::vector<CheckerRule> findings;
    for (const Checker checker : kCheckers)
      if (auto finding = checker(info)) findings.push_back(*std::move(finding));
    const auto first = std::ranges::min_element(findings, {}, &CheckerRule::priority);
    const bool well = first == findings.end();
    EXPECT_EQ(SystemCheckerHandler().Check(info).ToJson(),
              (well ? HealthyRule() : *first).ToJson());
    if (!well) ties += std::ranges::count(findings, first->priority, &CheckerRule::priority) - 1;
  };
  for (unsigned seed = 0; seed < kMachines; ++seed) {
    const RandomMachine random(seed);
    SCOPED_TRACE(random.state);
    expectTheLaw(random.machine);
  }
  for (const std::string& one : Faults().getMemberNames()) {
    for (const std::string& other : Faults().getMemberNames()) {
      SCOPED_TRACE(one + ", " + other);
      expectTheLaw(MakeWorse(Faults()[one], Faults()[other]));
    }
  }
  EXPECT_GT(ties, 10) << "too few machines tried what happens on a tie";
}

TEST_F(Laws, AFaultNeverMakesTheAnswerLessUrgent) {
  for (unsigned seed = 0; seed < kMachines / 4; ++seed) {
    const RandomMachine random(seed);
    const double before = Verdict(random.machine).priority;
    for (const std::string& fault : Faults().getMemberNames()) {
      const Machine worse = MakeWorse(random.state, Faults()[fault]);
      EXPECT_LE(Verdict(worse).priority, before) << random.state << "; then " << fault;
    }
  }
}

TEST_F(Laws, EveryFaultIsToldOfOnAMachineThatIsWellOtherwise) {
  for (const std::string& fault : Faults().getMemberNames())
    EXPECT_NE(Verdict(MakeWorse({}, Faults()[fault])).id, "system_health") << fault;
}

struct Asked : testing::Test {
  Asked() {
    for (unsigned seed = 0; seed < kMachines; ++seed)
      answers.push_back(Ask(machines.emplace_back(seed).machine));
  }

  // Asks each machine, from any one on, as many times as there are machines.
  void ExpectTheSame(std::size_t from, std::size_t step) {
    for (std::size_t i = 0; i < machines.size(); ++i) {
      const std::size_t one = (from + i * step) % machines.size();
      if (Ask(machines[one].machine) != answers[one]) ++others;
    }
  }

  ~Asked() override {
    for (const auto& each : machines) EXPECT_TRUE(OwesNothing(each.machine)) << each.state;
  }

  std::vector<RandomMachine> machines;
  std::vector<Answer> answers;
  std::atomic<unsigned> others = 0;  // answers that were other ones
};

TEST_F(Asked, InAnyOrderAndLocaleAMachineAnswersTheSame) {
  ExpectTheSame(0, machines.size() - 1);
  EXPECT_EQ(others, 0U) << "in another order";
  const CommaLocale locale;
  ASSERT_STREQ(std::localeconv()->decimal_point, ",");
  ExpectTheSame(0, 1);
  EXPECT_EQ(others, 0U) << "where numbers have a comma";
}

// Every thread asks every machine in an order of its own, so that one machine answers several
// threads at a time, too.
TEST_F(Asked, ByManyThreadsAtOnceAMachineAnswersAsIfAlone) {
  std::vector<std::jthread> threads;
  for (std::size_t thread = 0; thread < 8; ++thread)
    threads.emplace_back([this, thread] { ExpectTheSame(thread, 2 * thread + 1); });
  threads.clear();
  EXPECT_EQ(others, 0U);
}

}  // namespace
}  // namespace VELA::SystemHealth
