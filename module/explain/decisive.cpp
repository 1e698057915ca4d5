#include "module/explain/decisive.h"

#include <string>
#include <string_view>

namespace VELA::SystemHealth::Explain {
namespace {

bool Always(const Json::Value&) { return true; }
bool IsTrue(const Json::Value& value) { return value.isBool() && value.asBool(); }
bool IsNotNormal(const Json::Value& value) {
  return value.isString() && value.asString() != "normal";
}
bool HasCrashed(const Json::Value& value) {
  return value == "Unhealthy" || value == "unavailabling";
}
bool HasSystemCrashed(const Json::Value& value) { return value == "system_crashed"; }
bool HasFailed(const Json::Value& value) {
  for (const Json::Value& each : value)
    if (each == "failed") return true;
  return false;
}

// The input that a finding's text speaks of, by its beginning, and which values of it do.
struct Row {
  std::string_view text;
  const char* input;
  bool (*speaksOf)(const Json::Value& value);
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
    {"usb_ups_status", "state", Always},
    {"desc_ha_abnormal", "status", Always},
    {"lun_crash", "status", HasCrashed},
    {"luns_crash", "status", HasCrashed},
    {"lun_", "status", IsNotNormal},
    {"luns_", "status", IsNotNormal},
    {"low_capacity_write_on_warning", "low-capacity write", IsTrue},
};

std::string TextKeyOf(const Json::Value& rule) {
  const Json::Value& description = rule["description"];
  const Json::Value& params = description["description_params"];
  const bool formatted = description["description_use_formatted"].asBool();
  const std::string reference = formatted ? description["description_format"].asString()
                                          : params[params.size() - 1].asString();
  return reference.substr(reference.find(':') + 1);
}

// Whether a finding speaks of what is free at all, of bytes or of inodes.
void MarkComparisons(std::string_view text, Json::Value& compared) {
  const auto speaksOf = [text](const char* word) { return text.find(word) != text.npos; };
  const char* unit = speaksOf("inode") ? "inodes" : "bytes";
  if (!speaksOf("inode") && !speaksOf("space") && !speaksOf("limit") &&
      !speaksOf("n_low_capacity") && !speaksOf("ns_low_capacity"))
    return;
  for (Json::Value& comparison : compared)
    comparison["decides"] = comparison["low"].asBool() && comparison["unit"] == unit;
}

// An object with its inputs, and those in its lists.
void Mark(std::string_view text, Json::Value& object) {
  for (const Row& row : kRows) {
    if (!text.starts_with(row.text) || !object.isMember(row.input)) continue;
    if (row.speaksOf(object[row.input])) object["decides"].append(row.input);
    if (row.text != text) break;  // a longer beginning comes first, and counts alone
  }
  for (const std::string& name : object.getMemberNames()) {
    if (name == "compared") {
      MarkComparisons(text, object[name]);
    } else if (object[name].isArray() && name != "decides") {
      for (Json::Value& element : object[name])
        if (element.isObject()) Mark(text, element);
    }
  }
}

}  // namespace

void MarkDecisive(const Json::Value& rule, Json::Value& saw) {
  if (!rule.isNull()) Mark(TextKeyOf(rule), saw);
}

}  // namespace VELA::SystemHealth::Explain
