// What drives say of themselves: disks through smartd, memory chips through the kernel.
#include <algorithm>
#include <array>
#include <charconv>

#include "platform/linux/base/sysfs.h"
#include "platform/linux/notes/notes.h"
#include "platform/linux/notes/tell.h"
#include "platform/linux/storage/block.h"

namespace linux_platform {
namespace {

struct RemarkKind {
  std::string_view what;  // as DriveRemark has it
  NoteKind kind;
};
// What is missing here is no note: "ErrorCount", for the count of logged errors tells more, and an
// NVMe drive counts what it was asked and does not know.
constexpr auto kRemarks = std::to_array<RemarkKind>({
    {"reallocated sectors", kDriveReallocated},
    {"reported uncorrectable errors", kDriveReportedErrors},
    {"uncorrected reads", kDriveUncorrectedReads},
    {"media errors", kDriveMediaErrors},
    {"logged errors", kDriveLoggedErrors},
    {"self-test errors", kDriveSelfTestErrors},
    {"spare used per cent", kDriveSpareUsed},
    {"worn per cent", kDriveWorn},
});

void TellRemark(const WholeDisk& disk, const DriveRemark& remark) {
  const std::string part =
      remark.serial.empty() ? Concatenate(disk.name, " (", disk.device, ")") : remark.serial;
  // A critical warning of NVMe; its value are bits.
  if (remark.what == "Health")
    return Tell(remark.value != 0 ? kDriveUnreliable : kDriveWarnedOnce, part, disk.device);
  const auto* known = std::ranges::find(kRemarks, remark.what, &RemarkKind::what);
  if (known == kRemarks.end()) return;
  Tell(known->kind, part, disk.device, static_cast<std::int64_t>(remark.value),
       static_cast<std::int64_t>(remark.mark));
}

// "0x0b" as 11; 0 where it is not told.
int ReadLevel(std::string_view text) {
  int level = 0;
  if (!text.starts_with("0x")) return 0;
  text.remove_prefix(2);
  std::from_chars(text.data(), text.data() + text.size(), level, 16);
  return level;
}

// "0x03 0x0a": of the fast and of the plain memory, each step a tenth of its life; 0x0b is beyond.
int ReadWear(const std::string& folder) {
  const std::string text = Attribute(Within(folder, "device/life_time"));
  const std::size_t blank = text.find(' ');
  const std::string_view second =
      blank == text.npos ? std::string_view() : std::string_view(text).substr(blank + 1);
  return (std::max(ReadLevel(text), ReadLevel(second)) - 1) * 10;
}

}  // namespace

void TellDriveNotes(const std::vector<WholeDisk>& disks) {
  for (const WholeDisk& disk : disks)
    for (const DriveRemark& remark : disk.smart.remarks)
      if (remark.health == DriveHealth::Note) TellRemark(disk, remark);
}

void TellChipWear() {
  constexpr int kWorn = 90;
  for (const std::string& name : ListBlockDevices()) {
    if (!name.starts_with("mmcblk") || !IsDiskName(name)) continue;
    const std::string folder = Sys("/block/", name);
    if (const int wear = ReadWear(folder); wear >= kWorn) Tell(kChipWorn, name, name, wear, kWorn);
    // 2: eighty per cent of the spare blocks are in use; 3: ninety.
    const int spare = ReadLevel(Attribute(Within(folder, "device/pre_eol_info")));
    if (spare == 2 || spare == 3) Tell(kChipSpareUsed, name, name, spare == 2 ? 80 : 90, 80);
  }
}

}  // namespace linux_platform
