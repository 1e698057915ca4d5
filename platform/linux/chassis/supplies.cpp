#include "platform/linux/chassis/supplies.h"

#include <algorithm>

#include "platform/linux/base/snapshot.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/chassis/plugged_parts.h"

namespace linux_platform {

std::vector<SupplyReading> ListSupplies(const IpmiSnapshot& ipmi) {
  using State = ControllerSensor::State;
  std::vector<SupplyReading> supplies;
  for (const auto& [name, state, reading] : ipmi.supplies) {
    const bool predicted = state == State::Failing;
    const bool gone = state == State::Gone;
    const bool failed = state == State::Failed || state == State::InputLost || predicted || gone;
    supplies.push_back({name, state != State::Absent, failed, predicted, gone});
  }
  return supplies;
}

std::vector<std::string> ListMainsAdapters() {
  const std::string folder = Sys("/class/power_supply");
  std::vector<std::string> names = NamesIn(folder);
  std::erase_if(names, [&folder](const std::string& name) {
    return Attribute(Concatenate(folder, "/", name, "/type")) != "Mains";
  });
  return names;
}

std::vector<SupplyReading> ReadMainsAdapters() {
  std::vector<SupplyReading> supplies;
  const std::string folder = Sys("/class/power_supply");
  for (const std::string& name : ListMainsAdapters()) {
    const auto online = NumberAttribute(Concatenate(folder, "/", name, "/online"));
    supplies.push_back({name, online.has_value(), online == 0});
  }
  if (supplies.empty()) return supplies;
  auto plugged = PluggedParts::FromJson(ReadMemory(PluggedParts::kSource));
  for (const std::string& name : plugged.parts[PluggedParts::kMains])
    if (std::ranges::find(supplies, name, &SupplyReading::name) == supplies.end())
      supplies.push_back({name, true, true, false, true});
  std::ranges::sort(supplies, {}, &SupplyReading::name);
  if (supplies.size() < 2) supplies.clear();
  return supplies;
}

}  // namespace linux_platform
