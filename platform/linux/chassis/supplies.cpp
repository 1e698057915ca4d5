#include "platform/linux/chassis/supplies.h"

#include "common/json_reader.h"
#include "platform/linux/base/sysfs.h"

namespace linux_platform {

using common::FindMember, common::TextMember;

std::vector<SupplyReading> SuppliesOf(const Json::Value& ipmi) {
  std::vector<SupplyReading> supplies;
  const Json::Value* list = FindMember(ipmi, "supplies");
  if (list == nullptr || !list->isArray()) return supplies;
  for (const Json::Value& each : *list) {
    const std::string state = TextMember(each, "state");
    supplies.push_back(
        {TextMember(each, "name"), state != "absent", state == "failed" || state == "input_lost"});
  }
  return supplies;
}

std::vector<SupplyReading> MainsAdapters() {
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
