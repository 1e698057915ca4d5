#include "host/answer/remedies.h"

#include <algorithm>
#include <array>

#include "host/answer/finding_text.h"

namespace host {
namespace {

// Into a new folder: what can still be read may be damaged, and must not replace a good backup.
constexpr std::string_view kSave = "rsync -a /PATH/TO/DATA/ USER@OTHER-HOST:NEW-FOLDER/";
constexpr std::string_view kSaveStore = "cp --sparse=always -n /PATH/TO/STORE /PATH/TO/COPY";
constexpr std::string_view kShowUsage = "du -xh -d2 /MOUNT-POINT | sort -h | tail";
constexpr std::string_view kShowInodes = "du --inodes -x -d2 /MOUNT-POINT | sort -n | tail";
constexpr std::string_view kEnlarge = "lvextend -r -L +10G GROUP/VOLUME";

// An array's member that failed must leave before it may come back. Where the first does not
// succeed, mdadm does not try the second.
constexpr std::string_view kReturnMember =
    "mdadm /dev/ARRAY --remove /dev/PARTITION --add /dev/PARTITION";

struct Remedy {
  std::string_view finding;  // "id/text key"
  std::array<std::string_view, 3> commands;
};

constexpr auto kRemedies = std::to_array<Remedy>({
    {"system_crashed_warning/storage_is_danger",
     {kSave, "journalctl -k -p err", "cat /proc/mdstat"}},
    {"storagemanager_overview_danger/storage_is_danger",
     {kSave, "lsblk -o NAME,SIZE,STATE,SERIAL,MOUNTPOINTS", "mdadm --detail /dev/ARRAY"}},
    // The store is copied before its volume is mounted again: a host may write at once.
    {"san_status_warning/lun_crash_warning", {"targetcli ls", kSaveStore, "mount /MOUNT-POINT"}},
    {"san_status_warning/luns_crash_warning", {"targetcli ls", kSaveStore, "mount /MOUNT-POINT"}},
    {"securityscan_status_danger/securityscan_system_danger_desc",
     {"grep warning /var/log/lynis-report.dat", "systemctl start vela-security-scan"}},
    {"vela_system_status_warning/fan_fail", {"sensors", "ipmi-sensors --sensor-types=Fan"}},
    {"ha_status_warning/desc_ha_abnormal",
     {"crm_mon -1", "systemctl start corosync pacemaker", "crm_resource --cleanup"}},
    {"vela_system_status_warning/cpu_fan_fail", {"sensors", "systemctl poweroff"}},
    {"ebox_status_warning/eunit_fan_fail", {"lsscsi -g", "sg_ses --join /dev/SG-DEVICE"}},
    {"disk_status_warning/storage_is_warning",
     {"cat /proc/mdstat", "smartctl -x /dev/DISK", kReturnMember}},
    {"storage_is_attention/storage_is_warning",
     {"mdadm /dev/ARRAY --add /dev/NEW-DISK",
      "btrfs replace start -B OLD-DISK-ID /dev/NEW-DISK /MOUNT-POINT",
      "zpool replace POOL OLD-DISK NEW-DISK"}},
    {"vela_system_status_warning/enclosure_status_abnormal",
     {"ipmi-sensors --sensor-types=Power_Supply"}},
    {"ebox_status_warning/enclosure_status_abnormal",
     {"lsscsi -g", "sg_ses --join /dev/SG-DEVICE"}},
    {"vela_system_status_warning/power_fail",
     {"ipmi-sensors --sensor-types=Power_Supply,Voltage", "sensors"}},
    {"ups_status_abnormal/usb_ups_status_battery",
     {"upsc -l", "upsc UPS-NAME battery.runtime", "systemctl poweroff"}},
    {"ups_status_abnormal/usb_ups_status_low_batt",
     {"upsc -l", "upsc UPS-NAME ups.status", "systemctl poweroff"}},
    {"temperature_warning/temperature_warning",
     {"sensors", "ipmi-sensors --sensor-types=Temperature,Fan"}},
    {"san_status_warning/lun_reach_hard_limit", {kShowUsage, kEnlarge}},
    {"san_status_warning/luns_reach_hard_limit", {kShowUsage, kEnlarge}},
    {"san_status_warning/lun_low_capacity_write_on", {kShowUsage, kEnlarge}},
    {"san_status_warning/luns_low_capacity_write_on", {kShowUsage, kEnlarge}},
    {"san_status_warning/low_capacity_write_on_warning",
     {"sed -i '/^\\s*san.low_capacity_write/s/=.*/=no/' /etc/velainfo.conf"}},
    {"san_status_warning/lun_reach_soft_limit", {kShowUsage, kEnlarge}},
    {"san_status_warning/luns_reach_soft_limit", {kShowUsage, kEnlarge}},
    {"san_status_warning/lun_space_warning", {kShowUsage, kEnlarge}},
    {"san_status_warning/luns_space_warning", {kShowUsage, kEnlarge}},
    {"disk_health_status_error/disk_health_status_error",
     {"iscsiadm -m session -P 3", "nvme connect-all"}},
    {"volume_usage/available_volume_space_warning",
     {kShowUsage, "btrfs subvolume list -s /MOUNT-POINT", kEnlarge}},
    {"volume_usage/available_inode_full_warning", {kShowInodes}},
    {"volume_usage/usb_available_inode_full_warning", {kShowInodes}},
    {"external_volume/externaldevice_available_space_warning", {kShowUsage}},
    {"system_web_server_warning/system_web_server_failed",
     {"nginx -t", "apache2ctl configtest", "systemctl reload-or-restart WEB-SERVER"}},
});

}  // namespace

std::span<const std::string_view> ListGenericCommands(const Finding& finding) {
  const auto remedy = std::ranges::find(kRemedies, AdviceSection(finding), &Remedy::finding);
  if (remedy == kRemedies.end()) return {};
  const auto& commands = remedy->commands;
  const auto end = std::ranges::find(commands, std::string_view());
  return {commands.begin(), end};
}

std::vector<std::string> ChooseCommands(const Finding& finding,
                                        const std::vector<ToldCause>& causes) {
  std::vector<std::string> chosen;
  const auto add = [&chosen](std::string_view command) {
    if (std::ranges::find(chosen, command) == chosen.end()) chosen.emplace_back(command);
  };
  const auto generic = ListGenericCommands(finding);
  for (const std::string_view command : generic)
    if (command == kSave || command == kSaveStore) add(command);
  const bool known =
      std::ranges::any_of(causes, [](const auto& each) { return !each.mend.empty(); });
  for (const ToldCause& cause : causes)
    for (const std::string& command : cause.mend) add(command);
  if (known) return chosen;
  for (const std::string_view command : generic)
    if (std::ranges::find(causes, command, &ToldCause::show) == causes.end()) add(command);
  return chosen;
}

}  // namespace host
