#include "platform/linux/chassis/fan_verdict.h"

#include <gtest/gtest.h>

#include "common/json_reader.h"
#include "common/json_writer.h"
#include "platform/linux/chassis/fan_snapshot.h"
#include "platform/linux/chassis/sensor_chips.h"

namespace {

using namespace linux_platform;

constexpr long long kNow = 1'800'000'000;
constexpr FanHistory kNeverTurned = {}, kTurning = {true, 0}, kStopped = {true, kNow - 60};

FanReading Fan(std::optional<double> input) {
  FanReading fan;
  fan.input = input;
  return fan;
}

TEST(Fan, OnlyEvidenceThatItIsThereMakesItFail) {
  const struct {
    const char* why;
    std::optional<double> input;
    double minimum, pwm;
    bool alarm, fault, known, expected;
    FanHistory history;
    bool failed;
  } cases[] = {
      // Unreadable, whatever else.
      {"EAGAIN", {}, 0, 255, true, true, true, true, kStopped, false},
      // Expected by the administrator.
      {"expected, stands", 0, 0, 0, false, false, false, true, kNeverTurned, true},
      {"expected, turns", 900, 0, 0, true, false, false, true, kNeverTurned, false},
      {"expected, fault", 900, 0, 0, false, true, false, true, kNeverTurned, true},
      {"expected, below minimum", 900, 901, 0, false, false, false, true, kNeverTurned, true},
      {"expected, at minimum", 900, 900, 0, false, false, false, true, kNeverTurned, false},
      {"expected, odd minimum", 1171, 10546, 0, true, false, false, true, kNeverTurned, false},
      // Chips that know their fans.
      {"known, alarm", 900, 0, 0, true, false, true, false, kNeverTurned, true},
      {"known, fault", 0, 0, 0, false, true, true, false, kNeverTurned, true},
      {"known, off", 0, 0, 0, false, false, true, false, kStopped, false},
      // Seen turning since the boot.
      {"stopped, alarm", 0, 0, 0, true, false, false, false, kStopped, true},
      {"stopped, driven", 0, 0, 77, false, false, false, false, kStopped, true},
      {"stopped, on purpose", 0, 0, 76, false, false, false, false, kStopped, false},
      {"stopped just now", 0, 0, 255, true, false, false, false, {true, kNow - 4}, false},
      {"stopped five seconds ago", 0, 0, 255, true, false, false, false, {true, kNow - 5}, true},
      {"stood once only", 0, 0, 255, true, false, false, false, kTurning, false},
      {"turns again", 300, 0, 255, true, false, false, false, kStopped, false},
      // Empty headers and unprogrammed registers.
      {"empty header", 0, 0, 255, true, true, false, false, kNeverTurned, false},
      {"stopped before it was seen", 0, 0, 255, true, false, false, false, {false, 1}, false},
      {"alarm of an odd minimum", 1171, 10546, 255, true, false, false, false, kTurning, false},
      {"fault means unconnected", 0, 0, 255, false, true, false, false, kNeverTurned, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    FanReading fan = Fan(c.input);
    fan.minimum = c.minimum, fan.pwm = c.pwm;
    fan.alarm = c.alarm, fan.fault = c.fault, fan.known = c.known;
    EXPECT_EQ(HasFailed(fan, c.expected, c.history, kNow), c.failed);
  }
}

TEST(Fan, ItsLabelSaysWhetherItIsTheProcessors) {
  for (const char* label : {"CPU Fan", "cpu_fan", "Front CPU", "Cpu1", "CPU"})
    EXPECT_TRUE(IsProcessorFan(label)) << label;
  for (const char* label : {"fan1", "Chassis", "CP", "", "C P U"})
    EXPECT_FALSE(IsProcessorFan(label)) << label;
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
    FanReading fan = Fan(reading.input);
    fan.key = "chip:fan1";
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
  const struct {
    std::optional<double> input, critical;
    std::optional<bool> alarm;
    bool fault;
    std::optional<bool> hot;
  } cases[] = {
      {79.9, 80, {}, false, false}, {80, 80, {}, false, true},    {95, 80, true, true, {}},
      {20, 80, true, false, true},  {{}, {}, true, false, true},  {{}, {}, false, false, false},
      {112, 49, {}, false, {}},     {112, 151, {}, false, {}},    {112, 49, false, false, false},
      {{}, 80, {}, false, {}},      {50, 50, false, false, true}, {-128, 80, {}, false, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.input.value_or(-1));
    SCOPED_TRACE(c.critical.value_or(-1));
    EXPECT_EQ(IsTooHot({c.input, c.critical, c.alarm, c.fault}), c.hot);
  }
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
