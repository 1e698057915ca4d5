// Disks that failed, lost their connection, or say of themselves that they fail.
#include <algorithm>

#include "common/text.h"
#include "platform/linux/evidence/cause.h"

namespace linux_platform {
namespace {

struct RemarkKey {
  std::string_view what;  // as DriveRemark has it
  const char *key, *grown;
};
constexpr RemarkKey kRemarkKeys[] = {
    {"reallocated sectors", "disk_reallocated", "disk_reallocated_grown"},
    {"pending sectors", "disk_bad_sectors", ""},
    {"offline uncorrectable sectors", "disk_bad_sectors", ""},
    {"reported uncorrectable errors", "disk_read_errors", "disk_read_errors_grown"},
    {"uncorrected reads", "disk_read_errors", "disk_read_errors_grown"},
    {"media errors", "disk_read_errors", "disk_read_errors_grown"},
    {"uncorrected writes", "disk_write_errors", ""},
    {"SelfTest", "disk_self_test", ""},
    {"FailedOpenDevice", "disk_silent", ""},
    {"CurrentPendingSector", "disk_bad_sectors_told", ""},
    {"OfflineUncorrectableSector", "disk_bad_sectors_told", ""},
    {"ErrorCount", "disk_new_errors", ""},
};

const char* ChooseKey(const DriveRemark& remark) {
  const auto* known = std::ranges::find(kRemarkKeys, remark.what, &RemarkKey::what);
  if (known == std::end(kRemarkKeys)) return "disk_failing";
  return remark.grown ? known->grown : known->key;
}

const MdArray* FindArray(const StorageView& view, const WholeDisk& disk) {
  const auto array = std::ranges::find(view.redundancy.arrays, disk.usedBy, &MdArray::name);
  return array != view.redundancy.arrays.end() ? &*array : nullptr;
}

const MdMember* FindMember(const StorageView& view, const MdArray& array, const WholeDisk& disk) {
  const auto member = std::ranges::find_if(array.members, [&](const MdMember& each) {
    return NameDisk(view, each.device) == disk.name;
  });
  return member != array.members.end() ? &*member : nullptr;
}

// In an array the new disk takes over while the old one still helps.
void SetReplacement(const StorageView& view, const WholeDisk& disk, VELAEvidence& record) {
  const MdArray* array = FindArray(view, disk);
  const MdMember* member = array != nullptr ? FindMember(view, *array, disk) : nullptr;
  if (member == nullptr) return;
  const std::string node = "/dev/" + array->name;
  const std::string old = "/dev/" + member->device;
  SetMend(record, {WriteCommand("mdadm {} --add /dev/NEW-DISK", {node}),
                   WriteCommand("mdadm {} --replace {} --with /dev/NEW-DISK", {node, old}),
                   WriteCommand("mdadm --wait {}", {node})});
}

VELAEvidence DescribeRemark(const StorageView& view, const WholeDisk& disk,
                            const DriveRemark& remark) {
  VELAEvidence record = MakeEvidence(ChooseKey(remark), kOverview, disk.name);
  common::FillField(record.words, remark.what);
  // Of a warning the value are bits, which tell nobody anything.
  if (remark.mark != 0) record.figure = static_cast<std::int64_t>(remark.value);
  record.mark = static_cast<std::int64_t>(remark.mark);
  if (remark.serial.empty())
    SetReplacement(view, disk, record);
  else
    source_status::AddRelated(record, "behind", remark.serial);
  SetShow(record, remark.serial.empty() ? WriteCommand("smartctl -x {}", {"/dev/" + disk.device})
                                        : "smartctl --scan-open");
  return record;
}

VELAEvidence DescribeOffline(const WholeDisk& disk) {
  VELAEvidence record = MakeEvidence("disk_offline", kOverview, disk.name);
  SetShow(record, WriteCommand("journalctl -k -b -g {}", {disk.device}));
  SetMend(record,
          {WriteCommand("echo running > {}", {"/sys/block/" + disk.device + "/device/state"})});
  return record;
}

// Its copy of the system has failed.
VELAEvidence DescribeFailed(const StorageView& view, const WholeDisk& disk) {
  VELAEvidence record = MakeEvidence("disk_failed", kDisksCheck, disk.name);
  for (const MdArray& array : view.redundancy.arrays) {
    const MdMember* member = FindMember(view, array, disk);
    if (member == nullptr || !member->Has("faulty")) continue;
    const std::string node = "/dev/" + array.name;
    SetShow(record, WriteCommand("mdadm --detail {}", {node}));
    SetMend(record, {WriteCommand("mdadm {} --remove {}", {node, "/dev/" + member->device}),
                     WriteCommand("mdadm {} --add /dev/NEW-DISK", {node})});
    break;
  }
  return record;
}

VELAEvidence DescribeDisconnected(const WholeDisk& disk) {
  const bool nvme = disk.device.starts_with("nvme");
  VELAEvidence record = MakeEvidence("disk_disconnected", kDisksCheck, disk.name);
  SetShow(record, nvme ? "nvme list-subsys" : "iscsiadm -m session -P 3");
  // The session of an iSCSI disk is there and comes back by itself: it refuses a second login.
  if (nvme) SetMend(record, {"nvme connect-all"});
  return record;
}

}  // namespace

void AddDisks(const StorageView& view, Causes& causes) {
  for (const WholeDisk& disk : view.disks) {
    if (disk.health == Health::Normal) continue;
    if (view.devices->GetFacts(disk.device).offline && !disk.usedBy.empty())
      causes.push_back({disk.health, DescribeOffline(disk)});
    for (const DriveRemark& remark : disk.smart.remarks)
      if (remark.health == DriveHealth::Failing)
        causes.push_back({disk.health, DescribeRemark(view, disk, remark)});
  }
}

void TellDiskEvidence(const StorageView& view, const TakeEvidence& take) {
  for (const WholeDisk& disk : view.disks)
    if (std::string_view(disk.status) == "system_crashed") take(DescribeFailed(view, disk));
  for (const WholeDisk& disk : view.disks)
    if (disk.disconnected && !disk.usedBy.empty() && disk.usedBy != "hotspare")
      take(DescribeDisconnected(disk));
}

}  // namespace linux_platform
