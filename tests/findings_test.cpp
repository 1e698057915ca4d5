// The table of findings and the checkers: each is held to the other.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <tuple>

#include "SystemChecker/checker_table.h"
#include "SystemChecker/system_checker_handler.h"
#include "SystemInfo/system_info_handler.h"
#include "platform/simulator/scenario.h"
#include "tests/support/random_machine.h"

namespace VELA::SystemHealth {
namespace {

std::string TextKey(const CheckerRule& rule) {
  const Description& description = rule.description;
  return description.use_formatted ? description.formatted_text.second
                                   : description.params.back().second;
}

// The row that holds all of this rule; null for a rule that no row holds.
const Finding* FindRow(const CheckerRule& rule, std::optional<Check> check) {
  const auto row = std::ranges::find_if(kFindings, [&](const Finding& each) {
    return each.id == rule.id && each.textKey == TextKey(rule) && each.type == rule.type &&
           each.priority == rule.priority && each.check == check;
  });
  return row == kFindings.end() ? nullptr : &*row;
}

// Every rule that this machine brings must be a row; returns the row of the most urgent.
const Finding* ExpectRows(simulator::Machine machine) {
  simulator::Enter(&machine);
  const SystemInfoHandler info;
  const Finding* first = nullptr;
  for (std::size_t i = 0; i < std::size(kCheckers); ++i) {
    const auto rule = kCheckers[i](info);
    if (!rule) continue;
    const Finding* row = FindRow(*rule, static_cast<Check>(i));
    EXPECT_NE(row, nullptr) << kChecks[i].name << " made what is no row: " << rule->id;
    if (row != nullptr && (first == nullptr || row->priority < first->priority)) first = row;
  }
  simulator::Enter(nullptr);
  return first != nullptr ? first : FindRow(HealthyRule(), std::nullopt);
}

TEST(Findings, AreWhatTheCheckersMakeAndEachIsTheAnswerOfAScenario) {
  std::set<const Finding*> answers;
  for (const auto& folder : std::filesystem::directory_iterator(VELA_SCENARIOS)) {
    SCOPED_TRACE(folder.path());
    if (folder.is_directory()) answers.insert(ExpectRows(simulator::LoadScenario(folder)));
  }
  for (const Finding& row : kFindings)
    EXPECT_TRUE(answers.contains(&row)) << row.id << "/" << row.textKey << " has no scenario";

  for (unsigned seed = 0; seed < simulator::kRandomMachines; ++seed) {
    const simulator::RandomMachine random(seed);
    SCOPED_TRACE(random.state);
    ExpectRows(random.machine);
  }
}

TEST(Findings, StandOnceAndTheMostUrgentFirst) {
  EXPECT_TRUE(std::ranges::is_sorted(kFindings, {}, &Finding::priority));
  std::set<std::tuple<std::string, std::string, CheckerRuleType>> names;
  for (const Finding& row : kFindings)
    EXPECT_TRUE(names.emplace(row.id, row.textKey, row.type).second) << row.id << row.textKey;
}

}  // namespace
}  // namespace VELA::SystemHealth
