// The ten checkers. Each reads the snapshot and yields at most one finding; none sees
// another's result, and none logs.
#pragma once

#include <optional>

#include "SystemChecker/checker_rule.h"

namespace VELA::SystemHealth {

class SystemInfoHandler;

std::optional<CheckerRule> VolumeUsageChecker(const SystemInfoHandler& info);
std::optional<CheckerRule> ExternalVolumeChecker(const SystemInfoHandler& info);
std::optional<CheckerRule> DiskStatusChecker(const SystemInfoHandler& info);
std::optional<CheckerRule> StorageManagerOverviewChecker(const SystemInfoHandler& info);
std::optional<CheckerRule> UpsStatusChecker(const SystemInfoHandler& info);
std::optional<CheckerRule> EnclosureStatusChecker(const SystemInfoHandler& info);
std::optional<CheckerRule> SystemStatusChecker(const SystemInfoHandler& info);
std::optional<CheckerRule> EboxStatusChecker(const SystemInfoHandler& info);
std::optional<CheckerRule> HAStatusChecker(const SystemInfoHandler& info);
std::optional<CheckerRule> SANStatusChecker(const SystemInfoHandler& info);

}  // namespace VELA::SystemHealth
