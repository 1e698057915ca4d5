#include "host/answer/catalogue.h"

namespace host {

const std::vector<CatalogueEntry>& Catalogue() {
  using enum FindingType;
  // A model without disk bays warns where others only take notice.
  static const std::vector<CatalogueEntry> entries = {
      {-2.2, Danger, "system_crashed_warning", "storage_is_danger"},
      {-2.1, Danger, "storagemanager_overview_danger", "storage_is_danger"},
      {-1.5, Danger, "san_status_warning", "lun_crash_warning"},
      {-1.5, Danger, "san_status_warning", "luns_crash_warning"},
      {-1.0, Danger, "securityscan_status_danger", "securityscan_system_danger_desc"},
      {0.0, Warning, "vela_system_status_warning", "fan_fail"},
      {0.5, Warning, "ha_status_warning", "desc_ha_abnormal"},
      {1.0, Warning, "vela_system_status_warning", "cpu_fan_fail"},
      {2.0, Warning, "ebox_status_warning", "eunit_fan_fail"},
      {2.1, Warning, "disk_status_warning", "storage_is_warning"},
      {2.2, Warning, "storage_is_attention", "storage_is_warning"},
      {3.9, Warning, "vela_system_status_warning", "enclosure_status_abnormal"},
      {3.9, Warning, "ebox_status_warning", "enclosure_status_abnormal"},
      {4.0, Warning, "vela_system_status_warning", "power_fail"},
      {5.0, Warning, "ups_status_abnormal", "usb_ups_status_battery"},
      {5.0, Warning, "ups_status_abnormal", "usb_ups_status_low_batt"},
      {6.0, Warning, "temperature_warning", "temperature_warning"},
      {7.2, Warning, "san_status_warning", "lun_reach_hard_limit"},
      {7.2, Warning, "san_status_warning", "luns_reach_hard_limit"},
      {7.2, Warning, "san_status_warning", "lun_low_capacity_write_on"},
      {7.2, Warning, "san_status_warning", "luns_low_capacity_write_on"},
      {7.3, Warning, "san_status_warning", "low_capacity_write_on_warning"},
      {7.3, Warning, "san_status_warning", "lun_reach_soft_limit"},
      {7.3, Warning, "san_status_warning", "luns_reach_soft_limit"},
      {7.3, Warning, "san_status_warning", "lun_space_warning"},
      {7.3, Warning, "san_status_warning", "luns_space_warning"},
      {7.7, Warning, "disk_health_status_error", "disk_health_status_error"},
      {9.0, Warning, "volume_usage", "available_volume_space_warning"},
      {9.0, Warning, "volume_usage", "usb_available_inode_full_warning"},
      {9.0, Warning, "external_volume", "externaldevice_available_space_warning"},
      {10.0, Warning, "system_web_server_warning", "system_web_server_failed"},
      {30.0, Normal, "volume_usage", "available_volume_space_warning"},
      {30.0, Normal, "volume_usage", "available_inode_full_warning"},
      {30.0, Normal, "external_volume", "externaldevice_available_space_warning"},
      {40.0, Normal, "system_health", "system_ok"},
  };
  return entries;
}

}  // namespace host
