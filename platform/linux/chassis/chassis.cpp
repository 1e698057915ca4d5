#include "platform/linux/chassis/chassis.h"

#include <algorithm>
#include <ctime>

#include "common/json_reader.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/chassis/fan_memory.h"
#include "platform/linux/chassis/sensors.h"
#include "platform/linux/chassis/supplies.h"

namespace linux_platform {
namespace {

using common::FindMember, common::TextMember;

// Keeps the first trouble's words.
void NoteTrouble(std::string& trouble, std::string reason) {
  if (trouble.empty()) trouble = std::move(reason);
}

Json::Value Snapshot(const char* source, bool& absent, std::string& trouble) {
  Json::Value document;
  std::string reason;
  const SnapshotState state = ReadSnapshot(source, document, reason);
  absent = state == SnapshotState::Absent;
  if (state == SnapshotState::Failed) NoteTrouble(trouble, std::move(reason));
  if (state != SnapshotState::Read) return {};
  if (std::string part = TextMember(document, "trouble"); !part.empty())
    NoteTrouble(trouble, std::move(part));
  return document;
}

void AddFan(const std::string& label, Chassis& chassis) {
  (IsProcessorFan(label) ? chassis.processorFanFailed : chassis.fanFailed) = true;
}

void JudgeFans(const SensorReadings& readings, const std::vector<ExpectedFan>& expected,
               Chassis& chassis) {
  bool absent = false;
  const Json::Value snapshot = Snapshot("fans", absent, chassis.trouble);
  const Json::Value* memory = FindMember(snapshot, "fans");
  const std::time_t now = std::time(nullptr);
  for (const FanReading& fan : readings.fans) {
    const FanHistory history = memory != nullptr ? HistoryOf(*memory, fan.key) : FanHistory();
    if (HasFailed(fan, Expected(expected, fan.key) != nullptr, history, now))
      AddFan(fan.label, chassis);
  }
  for (const ExpectedFan& wanted : expected) {
    const auto there = [&](const FanReading& fan) {
      return Expected({wanted}, fan.key) != nullptr;
    };
    if (std::ranges::none_of(readings.fans, there))
      NoteTrouble(chassis.trouble, "fan.expect names " + std::string(wanted.chip) + ":" +
                                       std::string(wanted.feature) + ", which no sensor chip has");
  }
}

void JudgeTemperatures(const SensorReadings& readings, Chassis& chassis) {
  for (const TemperatureReading& temperature : readings.temperatures)
    if (const auto hot = IsTooHot(temperature))
      chassis.tooHot = chassis.tooHot.value_or(false) || *hot;
}

template <typename Each>
void ForEachState(const Json::Value& document, const char* list, const Each& each) {
  const Json::Value* sensors = FindMember(document, list);
  if (sensors == nullptr || !sensors->isArray()) return;
  for (const Json::Value& sensor : *sensors)
    each(TextMember(sensor, "name"), TextMember(sensor, "state"));
}

void JudgeController(const Json::Value& ipmi, Chassis& chassis) {
  ForEachState(ipmi, "fans", [&chassis](const std::string& name, const std::string& state) {
    if (state == "failed") AddFan(name, chassis);
  });
  ForEachState(ipmi, "temperatures", [&chassis](const std::string&, const std::string& state) {
    if (state == "critical" || state == "ok")
      chassis.tooHot = chassis.tooHot.value_or(false) || state == "critical";
  });
}

void JudgeSupplies(const std::vector<SupplyReading>& supplies, Chassis& chassis) {
  for (std::size_t bay = 0; bay < std::min(supplies.size(), kWatchedSupplies); ++bay) {
    if (!supplies[bay].present) continue;
    ++chassis.supplies;
    if (supplies[bay].failed) chassis.failedSupplies |= 1U << bay;
  }
}

// The first that knows any: the management controller, the supplies, the kernel.
std::vector<SupplyReading> Supplies(const Json::Value& ipmi, const SensorReadings& readings) {
  std::vector<SupplyReading> supplies = SuppliesOf(ipmi);
  if (supplies.empty()) supplies = readings.supplies;
  return supplies.empty() ? MainsAdapters() : supplies;
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
  const Json::Value ipmi = Snapshot("ipmi", noController, chassis.trouble);
  const auto supplies = Supplies(ipmi, readings);

  if (state == SensorsState::Read || !expected.empty()) JudgeFans(readings, expected, chassis);
  JudgeTemperatures(readings, chassis);
  JudgeController(ipmi, chassis);
  JudgeSupplies(supplies, chassis);
  chassis.absent = state == SensorsState::Absent && noController && supplies.empty();
  return chassis;
}

}  // namespace linux_platform
