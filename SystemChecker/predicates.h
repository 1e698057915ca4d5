// What the checkers decide by, shared with whoever explains their findings.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "SystemChecker/checker_rule.h"
#include "SystemInfo/system_info_handler.h"

namespace VELA::SystemHealth {

// A model without internal disk bays, which gets warnings where others get notices. Asked of the
// settings anew each time.
bool HasNoBays(const VelaConfInfo& conf);

// The settings of the free share below which inodes (volumes of this kind) are short, and what
// holds without them: 0.05 is five per cent.
inline constexpr const char* kInodeMarkKey = "disk_inode_warning_percent";
const char* ExternalVolumeMarkKey(ExternalVolumeType type);
inline constexpr double kUsualMark = 0.05;

// The order in which the kinds are looked at: the first with a finding ends the check.
inline constexpr ExternalVolumeType kExternalVolumeTypes[] = {
    ExternalVolumeType::Usb, ExternalVolumeType::SdCard, ExternalVolumeType::Esata};
bool IsShortOfSpace(const ExternalVolume& volume, double mark);

// The LUN's status says that it is lost; that it is neither lost nor normal.
bool IsCrashed(std::string_view lunStatus);
bool IsDegraded(std::string_view lunStatus);
// At most a tenth of a volume with LUNs is free.
constexpr double kSanMark = 0.1;
bool IsShortOfSpace(const VolumeInfo& volume);

// The cluster, asked at the time of the check: null where none runs.
std::optional<std::string> ReadClusterStatus();
std::optional<CheckerRule> JudgeCluster(const std::optional<std::string>& status);

}  // namespace VELA::SystemHealth
