// The management controller's sensors, and what is known of fans and supplies: which have turned,
// which were there.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <ctime>

#include "platform/linux/base/open.h"
#include "platform/linux/base/replace_file.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/chassis/enclosure_snapshot.h"
#include "platform/linux/chassis/fan_snapshot.h"
#include "platform/linux/chassis/plugged_parts.h"
#include "platform/linux/chassis/sensors.h"
#include "platform/linux/chassis/supplies.h"
#include "platform/linux/collector/commands.h"
#include "platform/linux/collector/ipmi_sensors.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/collector/snapshot_folder.h"

namespace linux_platform {
namespace {

constexpr std::array kNodes = {"/dev/ipmi0", "/dev/ipmi/0", "/dev/ipmidev/0"};
// The first time it reads the controller's list of sensors, which is slow, and keeps it.
constexpr Bounds kBounds = {std::chrono::seconds(22), std::size_t{1} << 20};

bool Exists(const char* path, int mode) { return Access(BelowRoot(path), mode); }

std::vector<std::string> BuildArguments() {
  const std::string cache = BelowRoot(kSnapshotFolder) + "/.sensors-of-ipmi";
  MakeFolder(cache, 0700);
  return {BelowRoot(kIpmiSensors),
          "--driver-type=OPENIPMI",
          "--sensor-types=Temperature,Fan,Power_Supply",
          "--comma-separated-output",
          "--no-header-output",
          "--output-sensor-state",
          "--quiet-cache",
          "--sdr-cache-recreate",
          "--sdr-cache-directory=" + cache};
}

// A controller that is busy leaves a supply out now and then: one that was there a minute ago is
// gone when the next round has not found it either.
void MarkGone(const IpmiSnapshot& before, IpmiSnapshot& snapshot) {
  using State = ControllerSensor::State;
  PluggedParts::FromJson(ReadMemory(PluggedParts::kSource))
      .MarkGone(PluggedParts::kController, snapshot.supplies);
  for (std::size_t bay = 0; bay < std::min(snapshot.supplies.size(), before.supplies.size());
       ++bay) {
    const State last = before.supplies[bay].state;
    State& now = snapshot.supplies[bay].state;
    if (now == State::Gone && last != State::Gone && last != State::Absent) now = State::Absent;
  }
}

}  // namespace

// By a program: a controller that does not answer holds its reader for as long as it likes.
Json::Value CollectIpmi() {
  const auto exists = [](const char* node) { return Exists(node, F_OK); };
  if (std::ranges::none_of(kNodes, exists) || !Exists(kIpmiSensors, X_OK)) return {};
  const CommandResult result = RunCommand({BuildArguments(), kBounds});
  if (!result.reason.empty()) return MakeError(result.reason);
  if (result.cut == Child::Cut::Late) return MakeError("the controller gave no answer within 22 s");
  if (result.cut == Child::Cut::Long) return MakeError("ipmi-sensors printed more than 1 MiB");
  if (result.status != 0)
    return MakeError("ipmi-sensors failed; run ipmi-sensors --driver-type=OPENIPMI to see why");
  IpmiSnapshot snapshot = ParseIpmiSensors(result.output);
  MarkGone(IpmiSnapshot::FromJson(ReadLastSnapshot(IpmiSnapshot::kSource)), snapshot);
  return snapshot.ToJson();
}

Json::Value CollectPlugged() {
  const auto before = PluggedParts::FromJson(ReadMemory(PluggedParts::kSource));
  PluggedParts plugged;
  const auto controller = IpmiSnapshot::FromJson(ReadLastSnapshot(IpmiSnapshot::kSource));
  plugged.Remember(PluggedParts::kController, controller.supplies, before);
  const auto ses = EnclosureSnapshot::FromJson(ReadLastSnapshot(EnclosureSnapshot::kSource));
  for (const Enclosure& enclosure : ses.enclosures) {
    plugged.Remember(enclosure.NameSupplies(), enclosure.supplies, before);
    plugged.Remember(enclosure.NameFans(), enclosure.fans, before);
  }
  const std::vector<std::string> mains = ListMainsAdapters();
  if (mains.size() > 1) plugged.parts[PluggedParts::kMains] = {mains.begin(), mains.end()};
  // What was not asked now is as it was.
  for (const auto& [device, names] : before.parts) {
    const auto [place, isNew] = plugged.parts.try_emplace(device, names);
    if (!isNew && device == PluggedParts::kMains) place->second.insert(names.begin(), names.end());
  }
  return plugged.parts.empty() ? Json::Value() : plugged.ToJson();
}

// A fan that has turned since boot and stands is broken; one that never turned is a header
// without a fan.
Json::Value CollectFans() {
  SensorReadings readings;
  std::string reason;
  const SensorsState state = ReadSensors({}, readings, reason);
  if (state == SensorsState::Failed) return MakeError(reason);
  if (state == SensorsState::Absent || readings.fans.empty()) return {};
  FanSnapshot snapshot = FanSnapshot::FromJson(ReadLastSnapshot(FanSnapshot::kSource));
  snapshot.Remember(readings.fans, static_cast<long long>(std::time(nullptr)));
  return snapshot.ToJson();
}

}  // namespace linux_platform
