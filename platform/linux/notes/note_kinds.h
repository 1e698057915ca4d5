// Every note that this platform can tell (docs/decisions/linux-notes.md has the reasons). The texts
// have one for each key: a test reads the keys from here.
#pragma once

namespace linux_platform {

struct NoteKind {
  const char* key;      // of the text
  const char* command;  // that shows it; "%s" in it stands for the device, unit or UPS
};

constexpr const char* kCountMemoryErrors = "grep . /sys/devices/system/edac/mc/mc*/*e_count";
constexpr const char* kShowDrive = "smartctl -x /dev/%s";
constexpr const char* kShowChip = "grep . /sys/block/%s/device/{life_time,pre_eol_info}";
constexpr const char* kShowUps = "upsc %s";

inline constexpr NoteKind kMemoryCorrected = {"memory_corrected", kCountMemoryErrors};
inline constexpr NoteKind kMemoryUncorrected = {"memory_uncorrected", kCountMemoryErrors};

inline constexpr NoteKind kDriveReallocated = {"drive_reallocated", kShowDrive};
inline constexpr NoteKind kDriveReportedErrors = {"drive_reported_errors", kShowDrive};
inline constexpr NoteKind kDriveUncorrectedReads = {"drive_uncorrected_reads", kShowDrive};
inline constexpr NoteKind kDriveMediaErrors = {"drive_media_errors", kShowDrive};
inline constexpr NoteKind kDriveLoggedErrors = {"drive_logged_errors", kShowDrive};
inline constexpr NoteKind kDriveSelfTestErrors = {"drive_self_test_errors", kShowDrive};
inline constexpr NoteKind kDriveSpareUsed = {"drive_spare_used", kShowDrive};
inline constexpr NoteKind kDriveWorn = {"drive_worn", kShowDrive};
inline constexpr NoteKind kDriveUnreliable = {"drive_unreliable", kShowDrive};
inline constexpr NoteKind kDriveWarnedOnce = {"drive_warned_once", kShowDrive};
inline constexpr NoteKind kChipWorn = {"chip_worn", kShowChip};
inline constexpr NoteKind kChipSpareUsed = {"chip_spare_used", kShowChip};

inline constexpr NoteKind kUpsOff = {"ups_off", kShowUps};
inline constexpr NoteKind kUpsOverloaded = {"ups_overloaded", kShowUps};
inline constexpr NoteKind kUpsBypass = {"ups_bypass", kShowUps};
inline constexpr NoteKind kUpsBattery = {"ups_battery", kShowUps};
inline constexpr NoteKind kUpsAlarm = {"ups_alarm", kShowUps};

inline constexpr NoteKind kPathsLost = {"paths_lost", "multipath -ll %s"};
inline constexpr NoteKind kSnapshotLost = {"snapshot_lost", "dmsetup status %s"};
inline constexpr NoteKind kArrayMismatches = {"array_mismatches",
                                              "cat /sys/block/%s/md/mismatch_cnt"};
inline constexpr NoteKind kArrayBadBlocks = {"array_bad_blocks",
                                             "grep . /sys/block/%s/md/dev-*/bad_blocks"};
inline constexpr NoteKind kArrayUnchecked = {"array_unchecked",
                                             "cat /sys/block/%s/md/last_sync_action"};
inline constexpr NoteKind kScrubOld = {"scrub_old", "btrfs scrub status %s"};

inline constexpr NoteKind kBondLegDown = {"bond_leg_down", "cat /proc/net/bonding/%s"};
inline constexpr NoteKind kClockAdrift = {"clock_adrift", "timedatectl"};
inline constexpr NoteKind kUnitFailed = {"unit_failed", "systemctl status %s"};

}  // namespace linux_platform
