// What holds for every machine, tried on machines at random.
#include <algorithm>
#include <clocale>
#include <locale>
#include <thread>

#include "SystemChecker/checkers.h"
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
  constexpr decltype(&VolumeUsageChecker) inOrder[] = {
      VolumeUsageChecker,  ExternalVolumeChecker,
      DiskStatusChecker,   StorageManagerOverviewChecker,
      UpsStatusChecker,    EnclosureStatusChecker,
      SystemStatusChecker, EboxStatusChecker,
      HAStatusChecker,     SANStatusChecker};
  std::vector<CheckerRule> findings;
  for (const auto checker : inOrder)
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

// The exceptions, each as it is meant.
TEST_F(Laws, TheseFaultsSilenceAnother) {
  const struct {
    const char* why;
    const char* finding;
    void (*first)(Machine& machine);
    void (*then)(Machine& machine);
  } cases[] = {
      {"the notice of low-capacity writes is for services without a troubled LUN",
       "san_status_warning",
       [](Machine& m) { m.sanOutput = R"({"luns": [], "low_capacity_write_on": true})"; },
       [](Machine& m) {
         m.sanOutput = R"({"luns": [{"status": "degraded"}], "low_capacity_write_on": true})";
       }},
      {"a volume that is not normal has no room to speak of", "volume_usage",
       [](Machine& m) { m.volumes[0].used = m.volumes[0].total; },
       [](Machine& m) { m.volumes[0].status = "crashed"; }},
      {"a source that fails looks healthy", "ups_status_abnormal",
       [](Machine& m) { m.upsState = 2; }, [](Machine& m) { m.upsFails = true; }},
      {"a volume that cannot be read is left out", "volume_usage",
       [](Machine& m) { m.volumes[0].freeInodes = 0; },
       [](Machine& m) { m.volumes[0].fails = true; }},
  };
  for (const auto& c : cases) {
    Machine machine;
    c.first(machine);
    EXPECT_EQ(Verdict(machine).id, c.finding) << c.why;
    c.then(machine);
    EXPECT_EQ(Verdict(machine).id, "system_health") << c.why;
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
