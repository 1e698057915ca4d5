#include "SystemChecker/checker_rule.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tests/support/recorded_log.h"

namespace VELA::SystemHealth {
namespace {

CheckerRule Rule(double priority, const std::string& id = "id") {
  return CheckerRule(CheckerRuleType::Warning, priority, id, "widget", "key");
}

TEST(CheckerRule, PriorityIsHeldWithinTheScale) {
  const struct {
    double given, held;
  } cases[] = {{-25.0, -20.0}, {-20.0, -20.0}, {0.5, 0.5}, {40.0, 40.0}, {55.0, 40.0}};
  for (const auto& c : cases) EXPECT_EQ(Rule(c.given).GetPriority(), c.held) << c.given;
  EXPECT_TRUE(std::isnan(Rule(std::nan("")).GetPriority()));
}

TEST(TopPriorityRule, TakesWhatItIsGivenAlsoWhenItLoses) {
  TopPriorityRule top;
  CheckerRule first = Rule(2.0, "the first"), second = Rule(2.0, "the second");
  top.Push(std::move(first));
  top.Push(std::move(second));
  EXPECT_EQ(first.id + second.id, "");
  EXPECT_EQ(top.Pop()->id, "the first");
  EXPECT_FALSE(top.Pop());
}

TEST(StringFormatter, NumbersPlaceholdersInTheOrderOfTheirReferences) {
  StringFormatter formatter{", ", "{}"};
  EXPECT_TRUE(formatter.Empty());
  formatter.Push("USB {} {}", {"a", "b"});
  formatter.Push(FormatUnit{"{} plain", std::nullopt});
  formatter.Push("none", {"c", "d"});
  formatter.Push(FormatUnit{"{}", TextReference("e", "f")});
  EXPECT_FALSE(formatter.Empty());
  const Description description = formatter.PopDescription("{} {}", {{"g", "h"}, {"i", "j"}});
  EXPECT_EQ(description.format, "USB {0} {}, {} plain, none, {2}{3} {4}");
  EXPECT_EQ(description.params, (std::vector<TextReference>{
                                    {"a", "b"}, {"c", "d"}, {"e", "f"}, {"g", "h"}, {"i", "j"}}));
}

TEST(StringFormatter, SurplusClosingReferencesAreLoggedAndDropped) {
  RecordedLog().clear();
  StringFormatter formatter{", ", "{}"};
  const Description description =
      formatter.PopDescription("{}!", {{"a", "b"}, {"c", "d"}, {"e", "f"}});
  EXPECT_EQ(description.format, "{0}!");
  EXPECT_EQ(description.params, (std::vector<TextReference>{{"a", "b"}}));
  ASSERT_EQ(RecordedLog().size(), 2U);
  const std::string& line = RecordedLog()[1];
  EXPECT_TRUE(line.starts_with("3 SystemChecker/checker_rule:")) << line;
  EXPECT_TRUE(line.ends_with(
      " Failed to parse format due to inconsistent number of Param: [e, f] & format: [{0}!]"))
      << line;
}

}  // namespace
}  // namespace VELA::SystemHealth
