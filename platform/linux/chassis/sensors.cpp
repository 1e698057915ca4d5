// libsensors is global to the process and not safe for threads: two that start it at once
// end the process. So it is used under a lock, started once, and started again only when
// chips or its configuration changed (each start also switches the process's locale for
// the length of a parse, which other threads may see).
#include "platform/linux/chassis/sensors.h"

#include <dirent.h>
#include <sys/stat.h>

#include <sensors/error.h>
#include <sensors/sensors.h>

#include <cstdlib>
#include <memory>
#include <mutex>
#include <set>

#include "platform/linux/base/open.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/chassis/fan_minimums.h"
#include "platform/linux/chassis/sensor_chips.h"

namespace linux_platform {
namespace {

constexpr const char *kConfiguration = "/etc/sensors3.conf",
                     *kConfigurationFolder = "/etc/sensors.d";
constexpr std::size_t kConfigurationCap = std::size_t{256} << 10;

constinit std::mutex mutex;
bool started = false;  // all under the mutex
std::string startedWith;
std::set<std::string> setMinimums;  // the fans whose minimum the configuration sets, by key

template <typename Each>
void ForEachEntry(const char* path, const Each& each) {
  const auto folder = OpenFolder(path);
  if (!folder) return;
  while (const dirent* entry = readdir(folder.get()))
    if (entry->d_name[0] != '.') each(*entry);
}

void AddFile(const std::string& path, std::string& signature) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) return;
  signature += std::to_string(status.st_ino) + '.' + std::to_string(status.st_mtim.tv_sec) + '.' +
               std::to_string(status.st_mtim.tv_nsec) + ' ';
}

// What changes when a chip comes or goes (one that is put back has a new inode) or the
// configuration is edited. Empty: the machine has no sensor chips.
std::string Signature() {
  std::string signature;
  ForEachEntry(Sys("/class/hwmon").c_str(), [&signature](const dirent& entry) {
    signature.append(entry.d_name).append(std::to_string(entry.d_ino)).push_back(' ');
  });
  if (signature.empty()) return signature;
  AddFile(kConfiguration, signature);
  ForEachEntry(kConfigurationFolder, [&signature](const dirent& entry) {
    AddFile(Within(kConfigurationFolder, entry.d_name), signature);
  });
  return signature;
}

std::string Name(const sensors_chip_name* chip) {
  char name[256] = {};
  return sensors_snprintf_chip_name(name, sizeof name, chip) > 0 ? name : chip->prefix;
}

// libsensors knows which chips a pattern means, and keeps to itself what it sets for them.
void AddSetMinimums(const std::string& path) {
  std::string text;
  ReadSmallFile(path.c_str(), kConfigurationCap, text);
  for (const auto& [pattern, feature] : ParseFanMinimums(text)) {
    sensors_chip_name match;
    if (sensors_parse_chip_name(pattern.c_str(), &match) != 0) continue;
    int next = 0;
    while (const sensors_chip_name* chip = sensors_get_detected_chips(&match, &next))
      setMinimums.insert(Name(chip) + ':' + feature);
    sensors_free_chip_name(&match);
  }
}

void IgnoreParseError(const char*, const char*, int) {}

// 0, or libsensors' error. A host that uses the library too keeps its own handler.
int Start(const std::string& signature) {
  if (started && signature == startedWith) return 0;
  if (started) sensors_cleanup();
  started = false;
  auto* const before = sensors_parse_error_wfn;
  sensors_parse_error_wfn = IgnoreParseError;
  const int result = sensors_init(nullptr);
  sensors_parse_error_wfn = before;
  if (result != 0) {
    sensors_cleanup();
    return result;
  }
  started = true;
  startedWith = signature;
  setMinimums.clear();
  AddSetMinimums(kConfiguration);
  for (const std::string& name : NamesIn(kConfigurationFolder))
    AddSetMinimums(Within(kConfigurationFolder, name));
  return 0;
}

std::optional<double> Value(const sensors_chip_name* chip, const sensors_feature* feature,
                            sensors_subfeature_type type) {
  const sensors_subfeature* part = sensors_get_subfeature(chip, feature, type);
  double value = 0;
  if (part == nullptr || (part->flags & SENSORS_MODE_R) == 0) return std::nullopt;
  if (sensors_get_value(chip, part->number, &value) != 0) return std::nullopt;
  return value;
}

bool IsSet(const sensors_chip_name* chip, const sensors_feature* feature,
           sensors_subfeature_type type) {
  return Value(chip, feature, type).value_or(0) > 0;
}

std::string Label(const sensors_chip_name* chip, const sensors_feature* feature) {
  const std::unique_ptr<char, void (*)(void*)> label(sensors_get_label(chip, feature), std::free);
  return label ? label.get() : feature->name;
}

// Firmware's own account of the fans has no address on a bus.
bool IsOnBoard(const sensors_chip_name* chip) {
  return chip->bus.type == SENSORS_BUS_TYPE_I2C ||
         (chip->bus.type == SENSORS_BUS_TYPE_ISA && chip->addr != 0);
}

FanReading ReadFan(const sensors_chip_name* chip, const sensors_feature* feature,
                   const std::string& chipName, const std::vector<ExpectedFan>& expected) {
  FanReading fan;
  fan.key = chipName + ':' + feature->name;
  fan.known = KnowsItsFans(chip->prefix);
  fan.input = Value(chip, feature, SENSORS_SUBFEATURE_FAN_INPUT);
  const ExpectedFan* wanted = FindExpected(expected, fan.key);
  fan.minimumIsSet = setMinimums.contains(fan.key);
  // A fan that turns, and of which nobody expects more, is well.
  fan.expected = wanted != nullptr;
  const bool wellIfItTurns = wanted == nullptr && !fan.known && !fan.minimumIsSet;
  if (!fan.input || (*fan.input > 0 && wellIfItTurns)) return fan;
  fan.onBoard = IsOnBoard(chip);
  fan.label = wanted != nullptr && !wanted->label.empty() ? std::string(wanted->label)
                                                          : Label(chip, feature);
  fan.minimum = Value(chip, feature, SENSORS_SUBFEATURE_FAN_MIN).value_or(0);
  fan.alarm = IsSet(chip, feature, SENSORS_SUBFEATURE_FAN_ALARM) ||
              IsSet(chip, feature, SENSORS_SUBFEATURE_FAN_MIN_ALARM);
  fan.fault = IsSet(chip, feature, SENSORS_SUBFEATURE_FAN_FAULT);
  // libsensors does not know what drives a fan.
  const std::string pwm = Within(chip->path, "pwm" + std::string(feature->name).substr(3));
  fan.pwm = NumberAttribute(pwm);
  return fan;
}

void ReadTemperature(const sensors_chip_name* chip, const sensors_feature* feature,
                     SensorReadings& readings) {
  TemperatureReading temperature;
  temperature.chip = readings.chips.size();
  temperature.feature = feature->name;
  const auto critical = Value(chip, feature, SENSORS_SUBFEATURE_TEMP_CRIT_ALARM);
  const auto emergency = Value(chip, feature, SENSORS_SUBFEATURE_TEMP_EMERGENCY_ALARM);
  if (critical || emergency)
    temperature.alarm = critical.value_or(0) > 0 || emergency.value_or(0) > 0;
  temperature.critical = Value(chip, feature, SENSORS_SUBFEATURE_TEMP_CRIT);
  if (!temperature.alarm && !temperature.critical) return;
  temperature.fault = IsSet(chip, feature, SENSORS_SUBFEATURE_TEMP_FAULT);
  if (temperature.critical) temperature.input = Value(chip, feature, SENSORS_SUBFEATURE_TEMP_INPUT);
  readings.temperatures.push_back(std::move(temperature));
}

// A supply is dead when its input voltage is, or when it says that it is overstrained.
bool SupplyFails(const sensors_chip_name* chip, const sensors_feature* feature) {
  switch (feature->type) {
    case SENSORS_FEATURE_IN:
      return Label(chip, feature) == "vin" &&
             IsSet(chip, feature, SENSORS_SUBFEATURE_IN_LCRIT_ALARM);
    case SENSORS_FEATURE_TEMP:
      return IsSet(chip, feature, SENSORS_SUBFEATURE_TEMP_CRIT_ALARM);
    case SENSORS_FEATURE_FAN:
      return IsSet(chip, feature, SENSORS_SUBFEATURE_FAN_FAULT);
    default:
      return false;
  }
}

void ReadChip(const sensors_chip_name* chip, const std::vector<ExpectedFan>& expected,
              SensorReadings& readings) {
  std::string name = Name(chip);
  const bool supply = IsSupply(chip->prefix);
  SupplyReading reading = {name, true, false};
  int next = 0;
  while (const sensors_feature* feature = sensors_get_features(chip, &next)) {
    if (supply) reading.failed |= SupplyFails(chip, feature);
    if (feature->type == SENSORS_FEATURE_FAN)
      readings.fans.push_back(ReadFan(chip, feature, name, expected));
    if (feature->type == SENSORS_FEATURE_TEMP) ReadTemperature(chip, feature, readings);
  }
  if (supply) readings.supplies.push_back(std::move(reading));
  readings.chips.push_back(std::move(name));
}

// Those that are the machine's own, in libsensors' order.
template <typename Each>
void ForEachChip(const Each& each) {
  int next = 0;
  while (const sensors_chip_name* chip = sensors_get_detected_chips(nullptr, &next))
    if (chip->bus.type != SENSORS_BUS_TYPE_SCSI && IsChassisChip(chip->prefix)) each(chip);
}

void AddLabels(const sensors_chip_name* chip, std::map<std::string, std::string>& labels) {
  int next = 0;
  while (const sensors_feature* feature = sensors_get_features(chip, &next))
    if (feature->type == SENSORS_FEATURE_FAN || feature->type == SENSORS_FEATURE_TEMP)
      labels[Name(chip) + ':' + feature->name] = Label(chip, feature);
}

}  // namespace

SensorsState ReadSensors(const std::vector<ExpectedFan>& expected, SensorReadings& readings,
                         std::string& reason) {
  const std::string signature = Signature();
  if (signature.empty()) {
    reason = "no sensor chips";
    return SensorsState::Absent;
  }
  const std::lock_guard lock(mutex);
  if (const int error = Start(signature); error != 0) {
    reason = std::string("libsensors could not read the sensor chips: ") + sensors_strerror(error);
    return SensorsState::Failed;
  }
  ForEachChip([&](const sensors_chip_name* chip) { ReadChip(chip, expected, readings); });
  return SensorsState::Read;
}

std::map<std::string, std::string> ReadSensorLabels() {
  std::map<std::string, std::string> labels;
  const std::string signature = Signature();
  if (signature.empty()) return labels;
  const std::lock_guard lock(mutex);
  if (Start(signature) == 0)
    ForEachChip([&labels](const sensors_chip_name* chip) { AddLabels(chip, labels); });
  return labels;
}

}  // namespace linux_platform
