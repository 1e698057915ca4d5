#include "platform/linux/chassis/chassis.h"

#include <algorithm>
#include <ctime>

#include "platform/linux/base/settings.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/chassis/fan_snapshot.h"
#include "platform/linux/chassis/ipmi_snapshot.h"
#include "platform/linux/chassis/sensors.h"
#include "platform/linux/chassis/supplies.h"

namespace linux_platform {
namespace {

// Keeps the first trouble's words.
void NoteTrouble(Trouble& trouble, Trouble another) {
  if (trouble.IsNone()) trouble = std::move(another);
}

template <typename Snapshot>
Snapshot ReadOrNote(bool& absent, Trouble& trouble) {
  Snapshot snapshot;
  std::string reason;
  const SnapshotState state = ReadSnapshot(snapshot, reason);
  absent = state == SnapshotState::Absent;
  NoteTrouble(trouble, ToTrouble(state, std::move(reason)));
  return snapshot;
}

void AddFan(const std::string& label, Chassis& chassis) {
  (IsProcessorFan(label) ? chassis.processorFanFailed : chassis.fanFailed) = true;
}

void JudgeFans(const SensorReadings& readings, const std::vector<ExpectedFan>& expected,
               Chassis& chassis) {
  bool absent = false;
  const auto snapshot = ReadOrNote<FanSnapshot>(absent, chassis.trouble);
  const std::time_t now = std::time(nullptr);
  for (const FanReading& fan : readings.fans) {
    if (HasFailed(fan, FindExpected(expected, fan.key) != nullptr, snapshot.FindHistory(fan.key),
                  now))
      AddFan(fan.label, chassis);
  }
  for (const ExpectedFan& wanted : expected) {
    const auto there = [&](const FanReading& fan) {
      return FindExpected({wanted}, fan.key) != nullptr;
    };
    if (std::ranges::none_of(readings.fans, there))
      NoteTrouble(chassis.trouble, "fan.expect names " + std::string(wanted.chip) + ":" +
                                       std::string(wanted.feature) + ", which no sensor chip has");
  }
}

void AddTemperature(bool hot, Chassis& chassis) {
  chassis.tooHot = chassis.tooHot.value_or(false) || hot;
}

void JudgeTemperatures(const SensorReadings& readings, Chassis& chassis) {
  for (const TemperatureReading& temperature : readings.temperatures)
    if (const auto hot = IsTooHot(temperature)) AddTemperature(*hot, chassis);
}

void JudgeController(const IpmiSnapshot& ipmi, Chassis& chassis) {
  using State = ControllerSensor::State;
  for (const auto& [name, state] : ipmi.fans)
    if (state == State::Failed) AddFan(name, chassis);
  for (const auto& [name, state] : ipmi.temperatures)
    if (state == State::Critical || state == State::Ok)
      AddTemperature(state == State::Critical, chassis);
}

void JudgeSupplies(const std::vector<SupplyReading>& supplies, Chassis& chassis) {
  for (std::size_t bay = 0; bay < std::min(supplies.size(), kWatchedSupplies); ++bay) {
    if (!supplies[bay].present) continue;
    ++chassis.supplies;
    if (supplies[bay].failed) chassis.failedSupplies |= 1U << bay;
    if (supplies[bay].predicted && chassis.remark.empty())
      chassis.remark =
          "supply " + supplies[bay].name + " still works, and predicts its own failure";
  }
}

// The first that knows any: the management controller, the supplies, the kernel.
std::vector<SupplyReading> ChooseSupplies(const IpmiSnapshot& ipmi,
                                          const SensorReadings& readings) {
  std::vector<SupplyReading> supplies = ListSupplies(ipmi);
  if (supplies.empty()) supplies = readings.supplies;
  return supplies.empty() ? ReadMainsAdapters() : supplies;
}

}  // namespace

Chassis ReadChassis(const Settings& settings) {
  Chassis chassis;
  const auto expected = ParseExpectedFans(settings.List("fan.expect"));

  SensorReadings readings;
  std::string reason;
  const SensorsState state = ReadSensors(expected, readings, reason);
  if (state == SensorsState::Failed) NoteTrouble(chassis.trouble, reason);
  bool noController = false;
  const auto ipmi = ReadOrNote<IpmiSnapshot>(noController, chassis.trouble);
  const auto supplies = ChooseSupplies(ipmi, readings);

  if (state == SensorsState::Read || !expected.empty()) JudgeFans(readings, expected, chassis);
  JudgeTemperatures(readings, chassis);
  JudgeController(ipmi, chassis);
  JudgeSupplies(supplies, chassis);
  chassis.absent = state == SensorsState::Absent && noController && supplies.empty();
  return chassis;
}

}  // namespace linux_platform
