#include "platform/linux/chassis/fan_verdict.h"

#include <gtest/gtest.h>

#include "common/json_reader.h"
#include "common/json_writer.h"
#include "platform/linux/chassis/fan_minimums.h"
#include "platform/linux/chassis/fan_snapshot.h"
#include "platform/linux/chassis/sensor_chips.h"
#include "tests/linux/table.h"

namespace {

using namespace linux_platform;

constexpr long long kNow = 1'800'000'000;

TEST(Fan, OnlyEvidenceThatItIsThereMakesItFail) {
  for (const auto& row : ReadTable("fans", 7)) {
    SCOPED_TRACE(row[0]);
    const auto says = [&row](const char* word) { return row[4].find(word) != std::string::npos; };
    FanReading fan;
    if (row[1] != "-") fan.input = std::stod(row[1]);
    fan.minimum = std::stod(row[2]);
    if (row[3] != "-") fan.pwm = std::stod(row[3]);
    fan.alarm = says("alarm"), fan.fault = says("fault"), fan.known = says("known");
    fan.minimumIsSet = says("set"), fan.onBoard = says("board");
    const FanHistory history = {says("turned"), row[5].empty() ? 0 : kNow - std::stoll(row[5])};
    EXPECT_EQ(HasFailed(fan, says("expected"), history, kNow), row[6] == "failed");
  }
}

TEST(Fan, TheExpectedOnesAreNamedByChipAndFeature) {
  const auto fans = ParseExpectedFans({"nct6779-isa-0290:fan2=CPU-Fan", "it8620:fan1", "nonsense"});
  ASSERT_EQ(fans.size(), 2U);
  const ExpectedFan* fan = FindExpected(fans, "nct6779-isa-0290:fan2");
  ASSERT_NE(fan, nullptr);
  EXPECT_EQ(fan->label, "CPU-Fan");
  EXPECT_NE(FindExpected(fans, "it8620-isa-0a30:fan1"), nullptr);
  EXPECT_EQ(FindExpected(fans, "it8620-isa-0a30:fan11"), nullptr);
  EXPECT_EQ(FindExpected(fans, "nct6779-isa-0291:fan2"), nullptr);
  EXPECT_EQ(FindExpected(fans, "no colon"), nullptr);
  EXPECT_TRUE(ParseExpectedFans({}).empty());
}

TEST(Fan, AMinimumThatTheConfigurationSetsWasSetOnPurpose) {
  std::string found;
  for (const auto& [chip, feature] :
       ParseFanMinimums("set fan9_min 1\n  chip \"lm78-*\" \"lm79-*\" # both\n set fan1_min 600\n"
                        "#set fan2_min 600\n set fan3_div 2\n label fan4_min x\nchip "
                        "\"it87-*\"\n\tset fan5_min 60*10"))
    found += chip + ":" + feature + " ";
  EXPECT_EQ(found, "lm78-*:fan1 lm79-*:fan1 it87-*:fan5 ");
}

TEST(FanSnapshot, RemembersWhatTurnedAndSinceWhenItStands) {
  const struct {
    std::optional<double> input;
    long long now;
    const char* written;
  } readings[] = {
      {0, 10, "{}"},  // an empty header
      {700, 20, R"({"chip:fan1":{"turned":true}})"},
      {0, 30, R"({"chip:fan1":{"stopped":30,"turned":true}})"},
      {0, 40, R"({"chip:fan1":{"stopped":30,"turned":true}})"},
      {{}, 50, R"({"chip:fan1":{"stopped":30,"turned":true}})"},
      {5, 60, R"({"chip:fan1":{"turned":true}})"},
  };
  FanSnapshot snapshot;
  for (const auto& reading : readings) {
    FanReading fan;
    fan.input = reading.input, fan.key = "chip:fan1";
    snapshot.Remember({fan}, reading.now);
    EXPECT_EQ(common::WriteCompact(snapshot.ToJson()["fans"]), reading.written) << reading.now;
    snapshot = FanSnapshot::FromJson(snapshot.ToJson());
  }
  snapshot.Remember({}, 70);
  EXPECT_TRUE(snapshot.FindHistory("chip:fan1").turned) << "a chip that is gone may come back";
  EXPECT_FALSE(snapshot.FindHistory("chip:fan2").turned);
  for (const char* odd : {"7", R"({"fans": 7})", R"({"fans": {"chip:fan1": 7}})",
                          R"({"fans": {"chip:fan1": {"turned": 1, "stopped": "x"}}})"}) {
    Json::Value document;
    ASSERT_TRUE(common::ParseJson(odd, document));
    const FanHistory history = FanSnapshot::FromJson(document).FindHistory("chip:fan1");
    EXPECT_FALSE(history.turned || history.stopped != 0) << odd;
  }
}

TEST(Temperature, OnlyCriticalLimitsCount) {
  const auto degrees = [](const std::string& cell) {
    return cell == "-" ? std::optional<double>() : std::stod(cell);
  };
  const auto answer = [](const std::string& cell) {
    return cell == "-" ? std::optional<bool>() : cell == "yes";
  };
  for (const auto& row : ReadTable("temperatures", 5))
    EXPECT_EQ(IsTooHot({degrees(row[0]), degrees(row[1]), answer(row[2]), row[3] == "yes"}),
              answer(row[4]))
        << row[0] << " of " << row[1];
}

TEST(SensorChips, DisksAndGadgetsAreNotTheChassis) {
  for (const char* prefix : {"drivetemp", "nvme", "w1_slave_temp", "amdgpu", "iwlwifi_1", "BAT0"})
    EXPECT_FALSE(IsChassisChip(prefix)) << prefix;
  for (const char* prefix : {"nct6779", "coretemp", "k10temp", "acpitz", "lm78", "pmbus"})
    EXPECT_TRUE(IsChassisChip(prefix)) << prefix;
  EXPECT_TRUE(KnowsItsFans("gpio_fan"));
  EXPECT_TRUE(KnowsItsFans("cffps2"));
  EXPECT_FALSE(KnowsItsFans("nct6779"));
  EXPECT_TRUE(IsSupply("dps920ab"));
  EXPECT_FALSE(IsSupply("pmbus"));
}

}  // namespace
