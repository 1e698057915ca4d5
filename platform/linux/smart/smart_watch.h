// Who watches the health of the disks, and what they say: smartd's files through the collector,
// and the records of its hook.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "platform/linux/base/snapshot.h"
#include "platform/linux/base/trouble.h"
#include "platform/linux/smart/drive_identity.h"
#include "platform/linux/smart/smart_snapshot.h"

namespace linux_platform {

struct SmartCoverage {
  bool watched = false;       // of at least one disk somebody knows the health
  std::vector<Trouble> gaps;  // who is not watched, one for each cause, with all its disks
  Trouble stray;              // the hook's records that fit no disk
};

// One request's look. The snapshot is read for the first disk, so a machine without disks costs
// nothing.
class SmartWatch {
 public:
  SmartWatch();

  // How the disk `device` is, whose folder in /sys is `path`; `name` is what people call it. A disk
  // that nobody watches is remembered for the coverage.
  DriveVerdict Judge(const std::string& device, const std::string& path, const std::string& name);

  // After all internal disks were judged; `blockDevices` are all disks, external ones too.
  SmartCoverage GetCoverage(std::span<const std::string> blockDevices) const;

 private:
  void ReadCollected();
  DriveRecord FindRecord(const std::string& device, const std::string& path);
  void JudgeHidden();
  struct Gap {
    std::string before, after, remedy;  // the words around the disks
    std::vector<std::string> disks;
  };
  Gap DescribeGap(const std::string& device, DriveKind kind, const DriveRecord& drive) const;
  void NoteUnwatched(Gap gap, const std::string& disk);
  static Trouble ToTrouble(const Gap& gap);
  std::set<std::string> ListSerialNumbers(std::span<const std::string> blockDevices) const;

  std::map<std::string, DriveWarnings> records_;  // by serial number
  std::optional<SnapshotState> state_;
  std::string reason_;  // why the snapshot could not be read
  SmartSnapshot snapshot_;
  std::optional<DriveVerdict> hidden_;  // of the disks that a controller hides, if smartd knows any
  std::time_t now_ = 0;
  bool watched_ = false;
  std::vector<Gap> gaps_;
};

}  // namespace linux_platform
