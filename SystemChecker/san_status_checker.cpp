#include <cstdint>
#include <string_view>
#include <unordered_map>

#include "SystemChecker/checkers.h"
#include "SystemChecker/predicates.h"

namespace VELA::SystemHealth {
namespace {

using enum CheckerRuleType;

constexpr std::uint64_t kHardLimit = 134217727;   // bytes; 128 MiB is above it
constexpr std::uint64_t kSoftLimit = 1073741823;  // bytes; 1 GiB is above it

// How many LUNs that are neither crashed nor normal lie on each volume.
using LunsAt = std::unordered_map<std::string_view, std::uint64_t>;

struct Luns {
  std::uint64_t crashed = 0;
  LunsAt others;
};

Luns Classify(const std::vector<LunInfo>& luns) {
  Luns result;
  for (const LunInfo& lun : luns) {
    if (IsCrashed(lun.status)) {
      ++result.crashed;
    } else if (IsDegraded(lun.status)) {
      ++result.others[lun.location];
    }
  }
  return result;
}

// The volumes of a limit, counted by the LUNs on them. A volume that is listed twice counts its
// LUNs twice: the number may be the square of what a document lists.
struct Group {
  bool any = false;
  std::uint64_t luns = 0;
};

struct LowVolumes {
  Group hardLimit;
  Group softLimit;
  Group space;
};

LowVolumes FindLowVolumes(const std::vector<VolumeInfo>& volumes, const LunsAt& luns) {
  LowVolumes low;
  for (const VolumeInfo& volume : volumes) {
    const auto onVolume = luns.find(volume.path);
    if (onVolume == luns.end() || !IsShortOfSpace(volume)) continue;
    Group& group = volume.freeSize <= kHardLimit   ? low.hardLimit
                   : volume.freeSize <= kSoftLimit ? low.softLimit
                                                   : low.space;
    group.any = true;
    group.luns += onVolume->second;
  }
  return low;
}

CheckerRule LunFinding(CheckerRuleType type, double priority, const char* singular,
                       const char* plural, std::uint64_t count) {
  return CheckerRule(type, priority, "san_status_warning",
                     Description::FormattedDescription({"iscsimgr", count < 2 ? singular : plural},
                                                       {std::to_string(count)}));
}

CheckerRule LunFinding(double priority, const char* singular, const char* plural,
                       const Group& group) {
  return LunFinding(Warning, priority, singular, plural, group.luns);
}

}  // namespace

bool IsCrashed(std::string_view lunStatus) {
  return lunStatus == "Unhealthy" || lunStatus == "unavailabling";
}

bool IsDegraded(std::string_view lunStatus) {
  return lunStatus != "normal" && !IsCrashed(lunStatus);
}

bool IsShortOfSpace(const VolumeInfo& volume) { return volume.freeSize <= volume.totalSize / 10; }

// The first that holds is the finding; priorities are not compared here.
std::optional<CheckerRule> SANStatusChecker(const SystemInfoHandler& info) {
  const SanStatusInfo& san = info.GetSanStatusInfo();
  const bool lowCapacityWrite = san.IsEnableLowCapacityWrite();

  const Luns luns = Classify(san.GetLunsStatus());
  if (luns.crashed > 0)
    return LunFinding(Danger, -1.5, "lun_crash_warning", "luns_crash_warning", luns.crashed);
  if (luns.others.empty()) {
    if (!lowCapacityWrite) return std::nullopt;
    return CheckerRule(Warning, 7.3, "san_status_warning", "iscsimgr",
                       "low_capacity_write_on_warning");
  }

  const LowVolumes low = FindLowVolumes(san.GetVolumesStatus(), luns.others);
  if (low.hardLimit.any)
    return LunFinding(7.2, "lun_reach_hard_limit", "luns_reach_hard_limit", low.hardLimit);
  if (low.softLimit.any && lowCapacityWrite)
    return LunFinding(7.2, "lun_low_capacity_write_on", "luns_low_capacity_write_on",
                      low.softLimit);
  if (low.softLimit.any)
    return LunFinding(7.3, "lun_reach_soft_limit", "luns_reach_soft_limit", low.softLimit);
  if (low.space.any) return LunFinding(7.3, "lun_space_warning", "luns_space_warning", low.space);
  return std::nullopt;
}

}  // namespace VELA::SystemHealth
