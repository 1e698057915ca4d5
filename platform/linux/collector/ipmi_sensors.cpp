#include "platform/linux/collector/ipmi_sensors.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>

namespace linux_platform {
namespace {

using State = ControllerSensor::State;

struct Sensor {
  std::string_view name, type, state, reading, unit, events;
};

bool Has(std::string_view text, std::string_view words) {
  return text.find(words) != std::string_view::npos;
}

// The last field of `rest`, which loses it.
std::string_view TakeLast(std::string_view& rest) {
  const std::size_t comma = rest.rfind(',');
  const std::string_view last = rest.substr(comma == std::string_view::npos ? 0 : comma + 1);
  rest = rest.substr(0, comma == std::string_view::npos ? 0 : comma);
  return last;
}

// Names and events may hold commas themselves; nothing else does.
std::optional<Sensor> ParseLine(std::string_view line) {
  const std::size_t record = line.find(','), quoted = line.find(",'");
  if (record == std::string_view::npos) return {};
  Sensor sensor;
  std::string_view rest = line.substr(record + 1);
  if (quoted != std::string_view::npos && quoted > record) {
    sensor.events = line.substr(quoted + 1);
    rest = line.substr(record + 1, quoted - record - 1);
  } else {
    sensor.events = TakeLast(rest);
  }
  sensor.unit = TakeLast(rest);
  sensor.reading = TakeLast(rest);
  sensor.state = TakeLast(rest);
  sensor.type = TakeLast(rest);
  sensor.name = rest;
  if (sensor.name.empty()) return {};
  return sensor;
}

State JudgeSupply(const Sensor& sensor) {
  if (Has(sensor.events, "input lost")) return State::InputLost;
  if (Has(sensor.events, "Power Supply Failure detected")) return State::Failed;
  if (Has(sensor.events, "Predictive Failure")) return State::Failing;
  if (sensor.state == "Critical") return State::Failed;
  return Has(sensor.events, "Presence detected") ? State::Ok : State::Absent;
}

State JudgeFan(const Sensor& sensor) {
  if (sensor.state == "Critical") return State::Failed;
  return sensor.state == "N/A" ? State::Unknown : State::Ok;
}

// Too cold is critical to the controller, and no warning of heat.
State JudgeTemperature(const Sensor& sensor) {
  if (sensor.state == "Critical")
    return Has(sensor.events, "Lower") ? State::Unknown : State::Critical;
  return sensor.state == "N/A" ? State::Unknown : State::Ok;
}

// Of "3120.00" in that unit; 0 for "N/A", and in another one.
int ReadFigure(const Sensor& sensor, std::string_view unit) {
  double figure = 0;
  if (sensor.unit != unit) return 0;
  std::from_chars(sensor.reading.data(), sensor.reading.data() + sensor.reading.size(), figure);
  return std::abs(figure) < 1e6 ? static_cast<int>(std::lround(figure)) : 0;
}

std::string ToPrintable(std::string_view text) {
  std::string printable(text);
  std::ranges::replace_if(
      printable, [](char c) { return c < 0x20 || c > 0x7E; }, '?');
  return printable;
}

}  // namespace

IpmiSnapshot ParseIpmiSensors(std::string_view text) {
  IpmiSnapshot snapshot;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const auto sensor = ParseLine(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    // What tells of redundancy tells of no single part.
    if (!sensor || Has(sensor->events, "edundan")) continue;
    const std::string name = ToPrintable(sensor->name);
    if (sensor->type == "Power Supply" && sensor->reading == "N/A")
      snapshot.supplies.push_back({name, JudgeSupply(*sensor)});
    if (sensor->type == "Fan")
      snapshot.fans.push_back({name, JudgeFan(*sensor), ReadFigure(*sensor, "RPM")});
    if (sensor->type == "Temperature")
      snapshot.temperatures.push_back({name, JudgeTemperature(*sensor), ReadFigure(*sensor, "C")});
  }
  return snapshot;
}

}  // namespace linux_platform
