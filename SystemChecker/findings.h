// Every finding that can occur, and the checks that make them. The checkers spell their findings
// out where they make them; a test holds them to these rows. The host's catalogue and
// explanations, docs/findings.md and the lab's list are made from them.
#pragma once

#include <array>
#include <optional>

#include "SystemChecker/checker_rule.h"
#include "common/sources.h"

namespace VELA::SystemHealth {

// In the order in which they run.
enum class Check {
  VolumeUsage,
  ExternalUsage,
  DiskStatus,
  StorageOverview,
  UpsStatus,
  Enclosures,
  SystemStatus,
  Eboxes,
  Cluster,
  SanStatus,
};

struct CheckRow {
  const char* name;
  // Must have been read before a check without a finding says anything. The security scan's
  // file is none of them: the module reads it itself.
  common::SourceSet sources;
};

inline constexpr auto kChecks = [] {
  using enum common::Source;
  return std::to_array<CheckRow>({
      {"volume usage", {Configuration, Volumes}},
      {"external volumes", {Configuration, ExternalVolumes}},
      {"disks", {Disks, Smart}},
      {"storage overview", {Disks, Volumes, Smart}},  // a failing disk shows here
      {"UPS", {Ups}},
      {"enclosures", {}},  // reports nothing
      {"system status", {Configuration, Hardware, WebServer, Volumes}},
      {"expansion units", {Hardware, ExpansionUnits}},
      {"high availability", {HighAvailability}},
      {"SAN", {San}},
  });
}();
static_assert(kChecks.size() == static_cast<std::size_t>(Check::SanStatus) + 1);

constexpr const CheckRow& FindCheck(Check check) {
  return kChecks[static_cast<std::size_t>(check)];
}

struct Finding {
  const char* id;
  const char* textKey;  // of the text that says what is wrong
  CheckerRuleType type;
  double priority;
  std::optional<Check> check;  // null: the healthy default
};

// The most urgent first; the healthy default is the last. A model without disk bays warns where
// others only take notice.
inline constexpr auto kFindings = [] {
  using enum CheckerRuleType;
  using enum Check;
  return std::to_array<Finding>({
      {"system_crashed_warning", "storage_is_danger", Danger, -2.2, SystemStatus},
      {"storagemanager_overview_danger", "storage_is_danger", Danger, -2.1, StorageOverview},
      {"san_status_warning", "lun_crash_warning", Danger, -1.5, SanStatus},
      {"san_status_warning", "luns_crash_warning", Danger, -1.5, SanStatus},
      {"securityscan_status_danger", "securityscan_system_danger_desc", Danger, -1.0, SystemStatus},
      {"vela_system_status_warning", "fan_fail", Warning, 0.0, SystemStatus},
      {"ha_status_warning", "desc_ha_abnormal", Warning, 0.5, Cluster},
      {"vela_system_status_warning", "cpu_fan_fail", Warning, 1.0, SystemStatus},
      {"ebox_status_warning", "eunit_fan_fail", Warning, 2.0, Eboxes},
      {"disk_status_warning", "storage_is_warning", Warning, 2.1, DiskStatus},
      {"storage_is_attention", "storage_is_warning", Warning, 2.2, StorageOverview},
      {"vela_system_status_warning", "enclosure_status_abnormal", Warning, 3.9, SystemStatus},
      {"ebox_status_warning", "enclosure_status_abnormal", Warning, 3.9, Eboxes},
      {"vela_system_status_warning", "power_fail", Warning, 4.0, SystemStatus},
      {"ups_status_abnormal", "usb_ups_status_battery", Warning, 5.0, UpsStatus},
      {"ups_status_abnormal", "usb_ups_status_low_batt", Warning, 5.0, UpsStatus},
      {"temperature_warning", "temperature_warning", Warning, 6.0, SystemStatus},
      {"san_status_warning", "lun_reach_hard_limit", Warning, 7.2, SanStatus},
      {"san_status_warning", "luns_reach_hard_limit", Warning, 7.2, SanStatus},
      {"san_status_warning", "lun_low_capacity_write_on", Warning, 7.2, SanStatus},
      {"san_status_warning", "luns_low_capacity_write_on", Warning, 7.2, SanStatus},
      {"san_status_warning", "low_capacity_write_on_warning", Warning, 7.3, SanStatus},
      {"san_status_warning", "lun_reach_soft_limit", Warning, 7.3, SanStatus},
      {"san_status_warning", "luns_reach_soft_limit", Warning, 7.3, SanStatus},
      {"san_status_warning", "lun_space_warning", Warning, 7.3, SanStatus},
      {"san_status_warning", "luns_space_warning", Warning, 7.3, SanStatus},
      {"disk_health_status_error", "disk_health_status_error", Warning, 7.7, DiskStatus},
      {"volume_usage", "available_volume_space_warning", Warning, 9.0, VolumeUsage},
      {"volume_usage", "usb_available_inode_full_warning", Warning, 9.0, VolumeUsage},
      {"external_volume", "externaldevice_available_space_warning", Warning, 9.0, ExternalUsage},
      {"system_web_server_warning", "system_web_server_failed", Warning, 10.0, SystemStatus},
      {"volume_usage", "available_volume_space_warning", Normal, 30.0, VolumeUsage},
      {"volume_usage", "available_inode_full_warning", Normal, 30.0, VolumeUsage},
      {"external_volume", "externaldevice_available_space_warning", Normal, 30.0, ExternalUsage},
      {"system_health", "system_ok", Normal, 40.0, std::nullopt},
  });
}();

}  // namespace VELA::SystemHealth
