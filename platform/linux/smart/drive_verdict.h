// Which of smartd's warnings and figures make a disk one that fails, and which are worth a note.
// docs/decisions/linux-smart.md has the evidence for each mark.
#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace linux_platform {

// Worst last.
enum class DriveHealth { Well, Note, Failing };

// One kind of trouble that smartd has warned of.
struct DriveWarning {
  std::time_t last = 0;  // when it last did; 0: not known
  unsigned bits = 0;     // of an NVMe drive's critical warning; 0: not known
};

// By smartd's name of the kind: "CurrentPendingSector".
using DriveWarnings = std::map<std::string, DriveWarning, std::less<>>;
// By name (kFigureNames of the rules): "pending sectors".
using DriveFigures = std::map<std::string, std::uint64_t, std::less<>>;

// What smartd knows of one drive.
struct DriveRecord {
  std::string device;     // kernel name; "" when no block device has this serial number
  std::string serial;     // as smartd names files: what is no letter or digit is "_"
  std::string type;       // "ata", "scsi" or "nvme"
  bool rotating = false;  // a disk with platters
  bool current = false;   // smartd has written of it since it was started
  std::time_t read = 0;   // when smartd last did
  DriveFigures figures;
  DriveFigures earlier;  // the first that are known of the last seven days
  DriveWarnings warnings;
};

// One reason for a verdict: "reallocated sectors", 304, held against 100.
struct DriveRemark {
  DriveHealth health = DriveHealth::Note;
  std::string what;  // a figure, or a kind of warning
  std::uint64_t value = 0, mark = 0;
  bool grown = false;       // value and mark are of the growth within seven days
  std::string serial = {};  // of a drive behind the disk, which a RAID controller hides
};

struct DriveVerdict {
  DriveHealth health = DriveHealth::Well;
  std::vector<DriveRemark> remarks;
  bool unseen = false;  // nobody watches the drive: well only for want of knowledge

  void Add(DriveRemark remark);
};

// `now` in seconds since 1970.
DriveVerdict JudgeDrive(const DriveRecord& drive, std::time_t now);

// Adds what the hook has recorded of the drive, but what has passed since: sectors that are
// pending no more, and a drive that could be opened and read again.
void AddWarnings(const DriveWarnings& recorded, DriveRecord& drive);

}  // namespace linux_platform
