#include "platform/linux/smart/smart_watch.h"

#include <algorithm>

#include "platform/linux/base/sysfs.h"
#include "platform/linux/smart/warning_records.h"
#include "platform/status/source_status.h"

namespace linux_platform {
namespace {

constexpr const char* kUnreadable = "FailedReadSmartData";
constexpr std::size_t kMostDisks = 4;  // of more, as many and how many others

bool IsHidden(const DriveRecord& drive) { return drive.device.empty() && drive.current; }

bool IsWatched(const DriveRecord& drive) {
  return drive.current && !drive.warnings.contains(kUnreadable);
}

}  // namespace

SmartWatch::SmartWatch() : records_(ReadWarningRecords()) {}

void SmartWatch::ReadCollected() {
  if (state_) return;
  state_ = ReadSnapshot(snapshot_, reason_);
  now_ = std::time(nullptr);
  JudgeHidden();
}

// What smartd's files and its hook say of the disk. The serial number is compared only where
// something was said: a name may have gone to another disk since the collector looked.
DriveRecord SmartWatch::FindRecord(const std::string& device, const std::string& path) {
  const DriveRecord* known = snapshot_.FindDrive(device);
  DriveRecord drive = known != nullptr ? *known : DriveRecord();
  const bool suspicious = JudgeDrive(drive, now_).health != DriveHealth::Well;
  if (records_.empty() && !suspicious) return drive;
  const std::string serial = ReadSerialNumber(device, path);
  if (ToFileName(serial) != drive.serial) drive = {};
  if (drive.type.empty() && device.starts_with("nvme")) drive.type = "nvme";
  if (const auto recorded = records_.find(serial); recorded != records_.end())
    AddWarnings(recorded->second, drive);
  return drive;
}

// Once for all volumes that such disks may be behind.
void SmartWatch::JudgeHidden() {
  for (const DriveRecord& drive : snapshot_.drives) {
    if (!IsHidden(drive)) continue;
    if (!hidden_) hidden_.emplace();
    for (DriveRemark& remark : JudgeDrive(drive, now_).remarks) {
      remark.serial = drive.serial;
      hidden_->Add(std::move(remark));
    }
  }
}

DriveVerdict SmartWatch::Judge(const std::string& device, const std::string& path,
                               const std::string& name) {
  ReadCollected();
  const DriveRecord drive = FindRecord(device, path);
  DriveVerdict verdict = JudgeDrive(drive, now_);
  const bool running = snapshot_.daemon == SmartSnapshot::kRunning;
  if (running && IsWatched(drive)) {
    watched_ = true;
    return verdict;
  }
  if (std::ranges::binary_search(snapshot_.without, device)) return verdict;
  const DriveKind kind = ReadDriveKind(device, path);
  if (kind == DriveKind::Without) return verdict;
  if (kind == DriveKind::BehindController && running && hidden_) {
    watched_ = true;
    for (const DriveRemark& remark : hidden_->remarks) verdict.Add(remark);
    return verdict;
  }
  NoteUnwatched(DescribeGap(device, kind, drive), name + " (" + device + ")");
  verdict.unseen = true;
  return verdict;
}

void SmartWatch::NoteUnwatched(Gap gap, const std::string& disk) {
  auto known = std::ranges::find(gaps_, gap.before, &Gap::before);
  if (known == gaps_.end()) known = gaps_.insert(known, std::move(gap));
  known->disks.push_back(disk);
}

SmartWatch::Gap SmartWatch::DescribeGap(const std::string& device, DriveKind kind,
                                        const DriveRecord& drive) const {
  if (state_ == SnapshotState::Absent)
    return {"nobody looks at what smartd knows of ",
            ": vela-platform-collect, which does so, does not run",
            kStartCollector,
            {}};
  if (state_ != SnapshotState::Read) return {reason_ + ". Unwatched: ", "", kStartCollector, {}};
  if (snapshot_.daemon == SmartSnapshot::kMissing)
    return {"smartd is not installed, so nobody sees the health of ",
            "",
            "apt install smartmontools",
            {}};
  if (snapshot_.daemon != SmartSnapshot::kRunning)
    return {"smartd does not run, so nobody sees the health of ",
            "",
            "systemctl enable --now smartmontools",
            {}};
  if (kind == DriveKind::BehindController)
    return {"a RAID controller hides the disks of ",
            "",
            "name each in /etc/smartd.conf, as /dev/" + device +
                " with its option -d (man smartd.conf); systemctl restart smartmontools",
            {}};
  if (drive.current)
    return {"smartd can no longer read the values of ", "", "smartctl -x /dev/" + device, {}};
  return {
      "smartd does not watch ", "", "systemctl restart smartmontools; journalctl -b -t smartd", {}};
}

Trouble SmartWatch::ToTrouble(const Gap& gap) {
  std::string text = gap.before;
  const std::size_t shown = std::min(gap.disks.size(), kMostDisks);
  for (std::size_t i = 0; i < shown; ++i) text += (i > 0 ? ", " : "") + gap.disks[i];
  if (gap.disks.size() > shown)
    text += " and " + std::to_string(gap.disks.size() - shown) + " others";
  return {text + gap.after, gap.remedy};
}

// Of all disks: those that the machine shows, and those that a controller hides, which only smartd
// names.
std::set<std::string> SmartWatch::ListSerialNumbers(
    std::span<const std::string> blockDevices) const {
  std::set<std::string> serials;
  for (const DriveRecord& drive : snapshot_.drives)
    if (IsHidden(drive)) serials.insert(drive.serial);
  for (const std::string& device : blockDevices)
    serials.insert(ReadSerialNumber(device, LinkTarget(Sys("/class/block/", device))));
  return serials;
}

SmartCoverage SmartWatch::GetCoverage(std::span<const std::string> blockDevices) const {
  SmartCoverage coverage;
  coverage.watched = watched_;
  for (const Gap& gap : gaps_) coverage.gaps.push_back(ToTrouble(gap));
  if (records_.empty()) return coverage;
  const std::set<std::string> present = ListSerialNumbers(blockDevices);
  std::string strays, last;
  for (const auto& [serial, warnings] : records_) {
    if (present.contains(serial) || present.contains(ToFileName(serial))) continue;
    strays += (strays.empty() ? "" : ", ") + serial + " (" + warnings.begin()->first + ")";
    last = serial;
  }
  if (!strays.empty())
    coverage.stray = {std::string(source_status::kStrayDisks) + strays,
                      "if it is gone for good: rm " + std::string(kWarningsFolder) + "/" + last};
  return coverage;
}

}  // namespace linux_platform
