#include "platform/linux/notes/notes.h"
#include "platform/linux/notes/tell.h"
#include "platform/linux/services/failed_units.h"

namespace linux_platform {

void TellFailedUnits(TimeBudget& budget) {
  // Backups, and what looks after storage. What merely serves files or pages is not meant.
  static const std::vector<std::string> kPatterns = {
      "*backup*", "*snapshot*",    "borg*",       "restic*",  "duplicity*",     "kopia*",
      "rclone*",  "rsnapshot*",    "snapper*",    "sanoid*",  "syncoid*",       "zrepl*",
      "btrbk*",   "zfs-*",         "btrfs*",      "mdcheck*", "mdmonitor*",     "mdadm*",
      "lvm2-*",   "dm-event*",     "multipathd*", "smartd*",  "smartmontools*", "fstrim*",
      "e2scrub*", "systemd-fsck*", "*.mount",     "*.swap"};
  for (const std::string& unit : ReadFailedUnits(kPatterns, budget)) Tell(kUnitFailed, unit, unit);
}

}  // namespace linux_platform
