// What holds for every machine, tried on machines at random.
#include <algorithm>
#include <clocale>
#include <locale>
#include <thread>

#include "SystemChecker/checker_table.h"
#include "SystemChecker/system_checker_handler.h"
#include "tests/support/ask.h"
#include "tests/support/comma_locale.h"
#include "tests/support/random_machine.h"
#include "tests/support/simulated_test.h"

namespace VELA::SystemHealth {
namespace {

using simulator::Fault;
using simulator::Faults;
using simulator::Machine;
using simulator::RandomMachine;

constexpr unsigned kMachines = simulator::kRandomMachines;

class Laws : public SimulatedTest {
 protected:
  CheckerRule Verdict(const Machine& machine) {
    Simulated() = machine;
    return SystemCheckerHandler().Check(SystemInfoHandler());
  }
};

// The findings of one machine's checkers, in the checkers' order.
std::vector<CheckerRule> Findings(const SystemInfoHandler& info) {
  std::vector<CheckerRule> findings;
  for (const Checker checker : kCheckers)
    if (auto finding = checker(info)) findings.push_back(*std::move(finding));
  return findings;
}

TEST_F(Laws, TheSmallestPriorityWinsAndTheEarlierCheckerOnATie) {
  std::ptrdiff_t ties = 0;
  const auto expectTheLaw = [&](const Machine& machine) {
    Simulated() = machine;
    const SystemInfoHandler info;
    const std::vector<CheckerRule> findings = Findings(info);
    const auto byPriority = [](const auto& a, const auto& b) { return a.priority < b.priority; };
    const auto first = std::min_element(findings.begin(), findings.end(), byPriority);
    const CheckerRule winner = SystemCheckerHandler().Check(info);
    if (first == findings.end()) {
      EXPECT_EQ(winner.id, "system_health");
      return;
    }
    EXPECT_EQ(winner.ToJson(), first->ToJson());
    ties += std::count_if(first + 1, findings.end(),
                          [&](const auto& other) { return other.priority == first->priority; });
  };
  for (unsigned seed = 0; seed < kMachines; ++seed) {
    const RandomMachine random(seed);
    SCOPED_TRACE(random.state);
    expectTheLaw(random.machine);
  }
  for (const Fault& one : Faults()) {
    for (const Fault& other : Faults()) {
      SCOPED_TRACE(std::string(one.name) + ", " + other.name);
      Machine machine;
      one.apply(machine);
      other.apply(machine);
      expectTheLaw(machine);
    }
  }
  EXPECT_GT(ties, 10) << "too few machines tried what happens on a tie";
}

TEST_F(Laws, AFaultNeverMakesTheAnswerLessUrgent) {
  for (unsigned seed = 0; seed < kMachines; ++seed) {
    const RandomMachine random(seed);
    const double before = Verdict(random.machine).priority;
    for (const Fault& fault : Faults()) {
      Machine worse = random.machine;
      fault.apply(worse);
      EXPECT_LE(Verdict(worse).priority, before) << random.state << "; then " << fault.name;
    }
  }
}

TEST_F(Laws, EveryFaultIsToldOfOnAMachineThatIsWellOtherwise) {
  for (const Fault& fault : Faults()) {
    Machine machine;
    fault.apply(machine);
    EXPECT_NE(Verdict(machine).id, "system_health") << fault.name;
  }
}

TEST_F(Laws, TheAnswerDependsOnTheMachineAlone) {
  std::vector<RandomMachine> machines;
  std::vector<std::string> answers;
  for (unsigned seed = 0; seed < kMachines; ++seed)
    answers.push_back(Ask(machines.emplace_back(seed).machine));

  const auto expectTheSame = [&](const char* circumstance) {
    for (std::size_t i = machines.size(); i-- > 0;)
      EXPECT_EQ(Ask(machines[i].machine), answers[i]) << circumstance << ": " << machines[i].state;
  };
  expectTheSame("in another order");
  std::thread(expectTheSame, "on another thread").join();
  const CommaLocale locale;
  ASSERT_STREQ(std::localeconv()->decimal_point, ",");
  expectTheSame("where numbers have a comma");
}

}  // namespace
}  // namespace VELA::SystemHealth
