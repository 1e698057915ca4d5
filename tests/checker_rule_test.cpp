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

TEST(CheckerRule, LessMeansLessUrgent) {
  EXPECT_TRUE(Rule(2.0) < Rule(1.0));
  EXPECT_FALSE(Rule(1.0) < Rule(2.0));
  EXPECT_FALSE(Rule(1.0) < Rule(1.0));
}

TEST(CheckerRule, JsonKeepsTheTypesOfItsNumbers) {
  const Json::Value json = Rule(40.0, "system_health").ToJson();
  EXPECT_EQ(json["type"].type(), Json::intValue);
  EXPECT_EQ(json["type"], 1);
  EXPECT_EQ(json["priority"].type(), Json::realValue);
  EXPECT_EQ(json["priority"], 40.0);
  EXPECT_EQ(json["id"], "system_health");
  EXPECT_EQ(json["description"]["description_params"][0], "widget:key");
  EXPECT_EQ(json.size(), 4U);
}

TEST(Description, EachShapeHasItsJson) {
  const struct {
    Description description;
    const char* format;
    std::vector<std::string> params;
    bool formatted;
  } cases[] = {
      {Description::NaiveDescription("widget", "system_ok"), "{0}", {"widget:system_ok"}, false},
      {Description::FormattedDescription({"volume", "usage"}, {"Volume 1", "95"}),
       "volume:usage",
       {"Volume 1", "95"},
       true},
      {Description::AdditionalDescription("{0} {1}", {{"a", "b:c"}, {"c", "d"}}),
       "{0} {1}",
       {"a:b:c", "c:d"},
       false},
      {Description::AdditionalDescription("plain", {}), "plain", {}, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.format);
    const Json::Value json = c.description.ToJson();
    EXPECT_EQ(json["description_format"], c.format);
    EXPECT_EQ(json["description_use_formatted"], c.formatted);
    ASSERT_TRUE(json["description_params"].isArray());
    ASSERT_EQ(json["description_params"].size(), c.params.size());
    for (Json::ArrayIndex i = 0; i < c.params.size(); ++i)
      EXPECT_EQ(json["description_params"][i], c.params[i]);
  }
}

TEST(TopPriorityRule, KeepsTheMostUrgentAndTheFirstOnATie) {
  TopPriorityRule top;
  EXPECT_FALSE(top.Pop());
  for (const double priority : {5.0, 2.0, 7.0}) top.Push(Rule(priority, "first"));
  top.Push(Rule(2.0, "second"));
  const auto winner = top.Pop();
  ASSERT_TRUE(winner);
  EXPECT_EQ(winner->priority, 2.0);
  EXPECT_EQ(winner->id, "first");
  EXPECT_FALSE(top.Pop());
  top.Push(Rule(30.0));
  EXPECT_TRUE(top.Pop()) << "a selection starts afresh";
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
