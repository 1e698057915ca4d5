#include "platform/linux/chassis/chassis.h"

#include <unistd.h>

#include <algorithm>
#include <ctime>

#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/chassis/fan_snapshot.h"
#include "platform/linux/chassis/plugged_parts.h"
#include "platform/linux/chassis/supplies.h"

namespace linux_platform {
namespace {

template <typename Snapshot>
Snapshot ReadOrNote(bool& absent, std::vector<Trouble>& troubles) {
  Snapshot snapshot;
  std::string reason;
  const SnapshotState state = ReadSnapshot(snapshot, reason);
  absent = state == SnapshotState::Absent;
  AddTrouble(ToTrouble(state, std::move(reason)), troubles);
  return snapshot;
}

// A management controller that is there, as everybody sees, while the collector says nothing of it.
Trouble MissController() {
  const bool hasNode = PathExists(Sys("/class/ipmi/ipmi0"));
  if (!hasNode && !PathExists(Sys("/bus/platform/devices/ipmi_bmc.0"))) return {};
  constexpr const char* kNobody = "nobody asks the management controller for its sensors: ";
  if (!Access(BelowRoot(kIpmiSensors), X_OK))
    return {std::string(kNobody) + "ipmi-sensors is not installed", "apt install freeipmi-tools"};
  if (!hasNode)
    return {std::string(kNobody) + "the kernel module ipmi_devintf is not loaded",
            "modprobe ipmi_devintf; echo ipmi_devintf >/etc/modules-load.d/ipmi.conf"};
  return MissCollector("only root may ask the management controller");
}

void AddFan(const std::string& label, Chassis& chassis) {
  (IsProcessorFan(label) ? chassis.processorFanFailed : chassis.fanFailed) = true;
}

constexpr FanHistory kTurnedAndStopped = {true, 1};

void JudgeFans(SensorReadings& readings, const std::vector<ExpectedFan>& expected,
               Chassis& chassis) {
  bool absent = false;
  const auto snapshot = ReadOrNote<FanSnapshot>(absent, chassis.troubles);
  const std::time_t now = std::time(nullptr);
  std::string unknown;  // a fan that stands, of which nobody remembers whether it ever turned
  for (FanReading& fan : readings.fans) {
    const FanHistory history = snapshot.FindHistory(fan.key);
    fan.failed = HasFailed(fan, fan.expected, history, now);
    fan.since = history.stopped;
    if (fan.failed)
      AddFan(fan.label, chassis);
    else if (absent && HasFailed(fan, fan.expected, kTurnedAndStopped, now))
      unknown = fan.label + " (" + fan.key + ")";
  }
  if (!unknown.empty())
    chassis.troubles.push_back(
        {unknown + " stands, and vela-platform-collect, which remembers what turned, does not run",
         kStartCollector});
  for (const ExpectedFan& wanted : expected) {
    const auto there = [&](const FanReading& fan) {
      return FindExpected({wanted}, fan.key) != nullptr;
    };
    if (std::ranges::none_of(readings.fans, there))
      chassis.troubles.emplace_back("fan.expect names " + std::string(wanted.chip) + ":" +
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
  for (const auto& [name, state, reading] : ipmi.fans)
    if (state == State::Failed) AddFan(name, chassis);
  for (const auto& [name, state, reading] : ipmi.temperatures)
    if (state == State::Critical || state == State::Ok)
      AddTemperature(state == State::Critical, chassis);
}

void JudgeSupplies(const std::vector<SupplyReading>& supplies, Chassis& chassis) {
  for (std::size_t bay = 0; bay < std::min(supplies.size(), kWatchedSupplies); ++bay) {
    if (!supplies[bay].present) continue;
    ++chassis.supplies;
    if (supplies[bay].failed) chassis.failedSupplies |= 1U << bay;
    if (supplies[bay].gone)
      chassis.remarks.push_back({"supply " + supplies[bay].name + " is gone", kForgetPart});
    if (supplies[bay].predicted)
      chassis.remarks.push_back(
          {"supply " + supplies[bay].name + " still works, and predicts its own failure",
           "have a supply at hand to replace it"});
  }
}

// The first that knows any: the management controller, the supplies, the kernel.
std::vector<SupplyReading> ChooseSupplies(const IpmiSnapshot& ipmi, SensorReadings& readings) {
  std::vector<SupplyReading> supplies = ListSupplies(ipmi);
  if (supplies.empty()) supplies = std::move(readings.supplies);
  return supplies.empty() ? ReadMainsAdapters() : supplies;
}

}  // namespace

Chassis ReadChassis(const Settings& settings) {
  Chassis chassis;
  const auto expected = ParseExpectedFans(settings.List("fan.expect"));

  SensorReadings& readings = chassis.readings;
  std::string reason;
  const SensorsState state = ReadSensors(expected, readings, reason);
  if (state == SensorsState::Failed) chassis.troubles.emplace_back(reason);
  bool noController = false;
  chassis.controller = ReadOrNote<IpmiSnapshot>(noController, chassis.troubles);
  if (noController) AddTrouble(MissController(), chassis.troubles);
  chassis.supplyBays = ChooseSupplies(chassis.controller, readings);

  if (state == SensorsState::Read || !expected.empty()) JudgeFans(readings, expected, chassis);
  JudgeTemperatures(readings, chassis);
  JudgeController(chassis.controller, chassis);
  JudgeSupplies(chassis.supplyBays, chassis);
  chassis.absent = state == SensorsState::Absent && noController && chassis.supplyBays.empty();
  return chassis;
}

}  // namespace linux_platform
