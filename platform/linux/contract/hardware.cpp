// The chassis: live sensor chips, and what the collector last heard from the management
// controller. A request asks several times; its thread looks once.
#include "platform/linux/contract/hardware.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <ctime>

#include "common/json_reader.h"
#include "platform/linux/base/log_once.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/chassis/fan_memory.h"
#include "platform/linux/chassis/sensors.h"
#include "platform/linux/chassis/supplies.h"
#include "platform/linux/contract/error.h"
#include "platform/linux/contract/expansion_units.h"
#include "platform/status/source_status.h"
#include "velac.h"

using namespace linux_platform;
using common::FindMember, common::TextMember;
using source_status::Source, source_status::SourceScope;

namespace {

constexpr auto kFresh = std::chrono::milliseconds(500);

constinit FailureLog failures("hardware");

struct Look {
  std::chrono::steady_clock::time_point taken;
  bool absent;
  std::string trouble;  // what could not be read, in words
  Chassis chassis;
};
thread_local Look look;

// Keeps the first trouble's words.
void Note(std::string& trouble, std::string reason) {
  if (trouble.empty()) trouble = std::move(reason);
}

Json::Value Snapshot(const char* source, bool& absent, std::string& trouble) {
  Json::Value document;
  std::string reason;
  const SnapshotState state = ReadSnapshot(source, document, reason);
  absent = state == SnapshotState::Absent;
  if (state == SnapshotState::Failed) Note(trouble, std::move(reason));
  if (state != SnapshotState::Read) return {};
  if (std::string part = TextMember(document, "trouble"); !part.empty())
    Note(trouble, std::move(part));
  return document;
}

void AddFan(const std::string& label, Chassis& chassis) {
  (IsProcessorFan(label) ? chassis.processorFanFailed : chassis.fanFailed) = true;
}

void JudgeFans(const SensorReadings& readings, const std::vector<ExpectedFan>& expected,
               Chassis& chassis, std::string& trouble) {
  bool absent = false;
  const Json::Value snapshot = Snapshot("fans", absent, trouble);
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
      Note(trouble, "fan.expect names " + std::string(wanted.chip) + ":" +
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

void LookAfresh() {
  std::string settingsText, trouble, reason;
  ReadSettings(kCurrentSettings, settingsText, reason);
  const Settings settings(std::move(settingsText));
  const char* listed = settings.Value("fan.expect");
  const auto expected = ParseExpectedFans(listed != nullptr ? listed : "");

  SensorReadings readings;
  const SensorsState state = ReadSensors(expected, readings, reason);
  if (state == SensorsState::Failed) Note(trouble, reason);
  bool noController = false;
  const Json::Value ipmi = Snapshot("ipmi", noController, trouble);
  const auto supplies = Supplies(ipmi, readings);

  look.chassis = {};
  if (state == SensorsState::Read || !expected.empty())
    JudgeFans(readings, expected, look.chassis, trouble);
  JudgeTemperatures(readings, look.chassis);
  JudgeController(ipmi, look.chassis);
  JudgeSupplies(supplies, look.chassis);
  look.chassis.failedUnitFans = FailedUnitFans();
  look.absent = state == SensorsState::Absent && noController && supplies.empty();
  look.trouble = std::move(trouble);
}

const Chassis& ReadChassis() {
  SourceScope scope(Source::Hardware);
  if (std::chrono::steady_clock::now() - look.taken > kFresh) {
    look.taken = {};
    LookAfresh();
    look.taken = std::chrono::steady_clock::now();
  }
  if (look.absent) scope.Absent("no sensor chips, management controller or second mains adapter");
  if (look.trouble.empty())
    failures.Fine();
  else
    failures.Failed(scope, look.trouble);
  return look.chassis;
}

struct Record {
  std::uint8_t fanFailed, processorFanFailed;
  std::uint32_t failedSupplies, failedUnitFans;
};
static_assert(sizeof(Record) <= sizeof(VELA_SYS_STATUS::opaque));

int WithMask(std::uint32_t mask, unsigned* detail) {
  if (detail != nullptr) *detail = mask << 8;
  return mask != 0;
}

}  // namespace

void linux_platform::ForgetHardware() { look = {}; }

int VELASysStatusGet(VELA_SYS_STATUS* record) {
  if (record == nullptr) return SetError(Error::BadArgument), -1;
  const Chassis& chassis = ReadChassis();
  const Record content = {chassis.fanFailed, chassis.processorFanFailed, chassis.failedSupplies,
                          chassis.failedUnitFans};
  *record = {};
  std::memcpy(record->opaque, &content, sizeof content);
  return 0;
}

int VELAIsComponentFail(const VELA_SYS_STATUS* record, int component, unsigned* detail) {
  if (record == nullptr) return SetError(Error::BadArgument), -1;
  Record content;
  std::memcpy(&content, record->opaque, sizeof content);
  if (detail != nullptr) *detail = 0;
  switch (component) {
    case 1:
      return content.fanFailed;
    case 4:
      return WithMask(content.failedSupplies, detail);
    case 5:
      return WithMask(content.failedUnitFans, detail);
    case 6:
      return content.processorFanFailed;
    default:
      return SetError(Error::BadArgument), -1;
  }
}

int VELARedundantPowerSupport(void) { return ReadChassis().supplies >= 2; }

int VELAHWSysTempWarning(int* state) {
  if (state == nullptr) return SetError(Error::BadArgument), -1;
  const Chassis& chassis = ReadChassis();
  if (!chassis.tooHot) return -1;  // no sensor that could tell
  *state = *chassis.tooHot ? 1 : 0;
  return 0;
}
