#include "platform/linux/chassis/supplies.h"

#include "platform/linux/base/sysfs.h"

namespace linux_platform {

std::vector<SupplyReading> ListSupplies(const IpmiSnapshot& ipmi) {
  using State = ControllerSensor::State;
  std::vector<SupplyReading> supplies;
  for (const auto& [name, state] : ipmi.supplies) {
    const bool predicted = state == State::Failing;
    const bool failed = state == State::Failed || state == State::InputLost || predicted;
    supplies.push_back({name, state != State::Absent, failed, predicted});
  }
  return supplies;
}

std::vector<SupplyReading> ReadMainsAdapters() {
  std::vector<SupplyReading> supplies;
  const std::string folder = Sys("/class/power_supply");
  for (const std::string& name : NamesIn(folder)) {
    const std::string adapter = Within(folder, name);
    if (Attribute(Within(adapter, "type")) != "Mains") continue;
    const auto online = NumberAttribute(Within(adapter, "online"));
    supplies.push_back({name, online.has_value(), online == 0});
  }
  if (supplies.size() < 2) supplies.clear();
  return supplies;
}

}  // namespace linux_platform
