#include "module/explain/decisive.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "SystemChecker/predicates.h"

namespace VELA::SystemHealth::Explain {
namespace {

bool Always(const Json::Value&) { return true; }
bool IsTrue(const Json::Value& value) { return value == true; }
bool HasCrashed(const Json::Value& lun) { return IsCrashed(lun.asString()); }
bool HasDegraded(const Json::Value& lun) { return IsDegraded(lun.asString()); }
bool HasSystemCrashed(const Json::Value& disk) { return disk == "system_crashed"; }
bool HasFailed(const Json::Value& supplies) {
  return std::find(supplies.begin(), supplies.end(), "failed") != supplies.end();
}
bool IsLow(const Json::Value& comparison, const char* unit) {
  return comparison["low"] == true && comparison["unit"] == unit;
}
bool IsLowOnBytes(const Json::Value& comparison) { return IsLow(comparison, "bytes"); }
bool IsLowOnInodes(const Json::Value& comparison) { return IsLow(comparison, "inodes"); }

// The inputs that a finding's text speaks of, and which values of them do.
struct Row {
  std::string_view textKey;
  std::string_view input;
  bool (*decides)(const Json::Value& value);
};
constexpr Row kRows[] = {
    {"storage_is_danger", "system volume crashed", IsTrue},
    {"storage_is_danger", "overview", Always},
    {"storage_is_warning", "overview", Always},
    {"storage_is_warning", "status", HasSystemCrashed},
    {"disk_health_status_error", "remotely disconnected", IsTrue},
    {"securityscan_system_danger_desc", "security scan", Always},
    {"fan_fail", "fan failed", IsTrue},
    {"cpu_fan_fail", "processor fan failed", IsTrue},
    {"eunit_fan_fail", "fan failed", IsTrue},
    {"power_fail", "power failed", IsTrue},
    {"enclosure_status_abnormal", "power supplies", HasFailed},
    {"temperature_warning", "too hot", IsTrue},
    {"system_web_server_failed", "web server failed", IsTrue},
    {"usb_ups_status_battery", "state", Always},
    {"usb_ups_status_low_batt", "state", Always},
    {"desc_ha_abnormal", "status", Always},
    {"lun_crash_warning", "status", HasCrashed},
    {"luns_crash_warning", "status", HasCrashed},
    {"lun_reach_hard_limit", "status", HasDegraded},
    {"lun_reach_hard_limit", "compared", IsLowOnBytes},
    {"luns_reach_hard_limit", "status", HasDegraded},
    {"luns_reach_hard_limit", "compared", IsLowOnBytes},
    {"lun_low_capacity_write_on", "status", HasDegraded},
    {"lun_low_capacity_write_on", "compared", IsLowOnBytes},
    {"luns_low_capacity_write_on", "status", HasDegraded},
    {"luns_low_capacity_write_on", "compared", IsLowOnBytes},
    {"lun_reach_soft_limit", "status", HasDegraded},
    {"lun_reach_soft_limit", "compared", IsLowOnBytes},
    {"luns_reach_soft_limit", "status", HasDegraded},
    {"luns_reach_soft_limit", "compared", IsLowOnBytes},
    {"lun_space_warning", "status", HasDegraded},
    {"lun_space_warning", "compared", IsLowOnBytes},
    {"luns_space_warning", "status", HasDegraded},
    {"luns_space_warning", "compared", IsLowOnBytes},
    {"low_capacity_write_on_warning", "low-capacity write", IsTrue},
    {"available_volume_space_warning", "compared", IsLowOnBytes},
    {"externaldevice_available_space_warning", "compared", IsLowOnBytes},
    {"available_inode_full_warning", "compared", IsLowOnInodes},
    {"usb_available_inode_full_warning", "compared", IsLowOnInodes},
};

std::string TextKeyOf(const Json::Value& rule) {
  const Json::Value& description = rule["description"];
  const Json::Value& params = description["description_params"];
  const bool formatted = description["description_use_formatted"].asBool();
  const std::string reference = formatted ? description["description_format"].asString()
                                          : params[params.size() - 1].asString();
  return reference.substr(reference.find(':') + 1);
}

// An object with its inputs, and those in its lists.
void Mark(std::string_view textKey, Json::Value& object) {
  for (const std::string& name : object.getMemberNames()) {
    Json::Value& value = object[name];
    const auto row = std::ranges::find_if(
        kRows, [&](const Row& each) { return each.textKey == textKey && each.input == name; });
    const bool spoken = row != std::end(kRows);
    if (name == "compared") {
      for (Json::Value& comparison : value)
        if (spoken) comparison["decides"] = row->decides(comparison);
    } else if (spoken && row->decides(value)) {
      object["decides"].append(name);
    } else if (value.isArray()) {
      for (Json::Value& element : value)
        if (element.isObject()) Mark(textKey, element);
    }
  }
}

}  // namespace

void MarkDecisive(const Json::Value& rule, Json::Value& saw) {
  if (!rule.isNull()) Mark(TextKeyOf(rule), saw);
}

}  // namespace VELA::SystemHealth::Explain
