// Every finding there is has a scenario, and no scenario answers anything else.
#include <algorithm>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/scenario_folders.h"

namespace {

struct Finding {
  int type;  // 0 danger, 1 warning, 2 nothing to act on
  double priority;
  std::string id;
  std::string text;  // the text that says what is wrong

  auto operator<=>(const Finding&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Finding& finding) {
  return out << finding.type << ' ' << finding.priority << ' ' << finding.id << ' ' << finding.text;
}

const std::vector<Finding>& EveryFinding() {
  static const std::vector<Finding> findings = {
      {0, -2.2, "system_crashed_warning", "widget:storage_is_danger"},
      {0, -2.1, "storagemanager_overview_danger", "widget:storage_is_danger"},
      {0, -1.5, "san_status_warning", "iscsimgr:lun_crash_warning"},
      {0, -1.5, "san_status_warning", "iscsimgr:luns_crash_warning"},
      {0, -1.0, "securityscan_status_danger", "securityscan:securityscan_system_danger_desc"},
      {1, 0.0, "vela_system_status_warning", "widget:fan_fail"},
      {1, 0.5, "ha_status_warning", "widget:desc_ha_abnormal"},
      {1, 1.0, "vela_system_status_warning", "widget:cpu_fan_fail"},
      {1, 2.0, "ebox_status_warning", "widget:eunit_fan_fail"},
      {1, 2.1, "disk_status_warning", "widget:storage_is_warning"},
      {1, 2.2, "storage_is_attention", "widget:storage_is_warning"},
      {1, 3.9, "vela_system_status_warning", "common:enclosure_status_abnormal"},
      {1, 3.9, "ebox_status_warning", "common:enclosure_status_abnormal"},
      {1, 4.0, "vela_system_status_warning", "widget:power_fail"},
      {1, 5.0, "ups_status_abnormal", "widget:usb_ups_status_battery"},
      {1, 5.0, "ups_status_abnormal", "widget:usb_ups_status_low_batt"},
      {1, 6.0, "temperature_warning", "widget:temperature_warning"},
      {1, 7.2, "san_status_warning", "iscsimgr:lun_reach_hard_limit"},
      {1, 7.2, "san_status_warning", "iscsimgr:luns_reach_hard_limit"},
      {1, 7.2, "san_status_warning", "iscsimgr:lun_low_capacity_write_on"},
      {1, 7.2, "san_status_warning", "iscsimgr:luns_low_capacity_write_on"},
      {1, 7.3, "san_status_warning", "iscsimgr:low_capacity_write_on_warning"},
      {1, 7.3, "san_status_warning", "iscsimgr:lun_reach_soft_limit"},
      {1, 7.3, "san_status_warning", "iscsimgr:luns_reach_soft_limit"},
      {1, 7.3, "san_status_warning", "iscsimgr:lun_space_warning"},
      {1, 7.3, "san_status_warning", "iscsimgr:luns_space_warning"},
      {1, 7.7, "disk_health_status_error", "widget:disk_health_status_error"},
      {1, 9.0, "volume_usage", "widget:available_volume_space_warning"},
      {1, 9.0, "volume_usage", "widget:usb_available_inode_full_warning"},
      {1, 9.0, "external_volume", "externaldevice:externaldevice_available_space_warning"},
      {1, 10.0, "system_web_server_warning", "widget:system_web_server_failed"},
      {2, 30.0, "volume_usage", "widget:available_volume_space_warning"},
      {2, 30.0, "volume_usage", "widget:available_inode_full_warning"},
      {2, 30.0, "external_volume", "externaldevice:externaldevice_available_space_warning"},
      {2, 40.0, "system_health", "widget:system_ok"},
  };
  return findings;
}

// A composed description ends in the text that says what is wrong; before it stand the
// words for what it concerns.
Finding FindingOf(const Json::Value& rule) {
  const Json::Value& description = rule["description"];
  const Json::Value& params = description["description_params"];
  const bool formatted = description["description_use_formatted"].asBool();
  const Json::Value& text =
      formatted ? description["description_format"] : params[params.size() - 1];
  return {rule["type"].asInt(), rule["priority"].asDouble(), rule["id"].asString(),
          text.asString()};
}

TEST(FindingCoverage, EveryFindingHasAScenarioAndEveryScenarioOneOfThem) {
  const auto& findings = EveryFinding();
  std::vector<Finding> missing = findings;
  for (const std::string& name : scenarios::Names()) {
    const Json::Value answer =
        scenarios::WholeAnswer(scenarios::Read(scenarios::Folder(name) / "expected.json"));
    const Finding finding = FindingOf(answer["rule"]);
    EXPECT_EQ(std::count(findings.begin(), findings.end(), finding), 1)
        << name << " expects what no decision table holds: " << finding;
    std::erase(missing, finding);
  }
  EXPECT_TRUE(missing.empty()) << "without a scenario: " << testing::PrintToString(missing);
}

}  // namespace
