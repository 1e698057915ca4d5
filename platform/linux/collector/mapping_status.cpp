#include "platform/linux/collector/mapping_status.h"

#include <libdevmapper.h>

#include <algorithm>
#include <memory>
#include <new>
#include <string_view>

namespace linux_platform {
namespace {

constexpr double kNearlyFull = 0.95;

using Pool = std::unique_ptr<dm_pool, void (*)(dm_pool*)>;

MappingStatus MakeNotUnderstood(const char* kind) {
  return {.kind = kind, .why = {}, .understood = false};
}

// How many dead devices the layout survives for certain.
std::size_t CountSpareDevices(std::string_view layout, std::size_t devices) {
  if (layout.starts_with("raid1") && !layout.starts_with("raid10")) return devices - 1;
  if (layout.starts_with("raid4") || layout.starts_with("raid5")) return 1;
  if (layout.starts_with("raid6")) return 2;
  if (layout.starts_with("raid10")) return devices / 2;
  return 0;
}

// Two copies lie on neighbours in the layout that LVM makes.
bool LostBothCopies(std::string_view layout, std::string_view health) {
  if (layout != "raid10" && layout != "raid10_near") return false;
  for (std::size_t i = 0; i + 1 < health.size(); i += 2)
    if (health[i] == 'D' && health[i + 1] == 'D') return true;
  return false;
}

MappingStatus JudgeRaid(dm_pool* pool, const char* parameters) {
  MappingStatus status{.kind = "raid", .why = {}};
  dm_status_raid* raid = nullptr;
  if (!dm_get_status_raid(pool, parameters, &raid)) return MakeNotUnderstood("raid");
  const std::string_view layout = raid->raid_type, health = raid->dev_health;
  const auto dead = static_cast<std::size_t>(std::ranges::count(health, 'D'));
  if (dead == 0) return status;
  const bool lost =
      dead > CountSpareDevices(layout, health.size()) || LostBothCopies(layout, health);
  status.health = lost ? Health::Danger : Health::Abnormal;
  status.why = std::to_string(dead) + " of " + std::to_string(health.size()) + " devices failed (" +
               std::string(layout) + ")";
  return status;
}

MappingStatus JudgeMirror(dm_pool* pool, const char* parameters) {
  MappingStatus status{.kind = "mirror", .why = {}};
  dm_status_mirror* mirror = nullptr;
  if (!dm_get_status_mirror(pool, parameters, &mirror)) return MakeNotUnderstood("mirror");
  const auto failed =
      std::count_if(mirror->devs, mirror->devs + mirror->dev_count,
                    [](const auto& device) { return device.health != DM_STATUS_MIRROR_ALIVE; });
  if (failed == 0) return status;
  status.health = failed == mirror->dev_count ? Health::Danger : Health::Abnormal;
  status.why =
      std::to_string(failed) + " of " + std::to_string(mirror->dev_count) + " copies failed";
  return status;
}

bool IsNearlyFull(std::uint64_t used, std::uint64_t total) {
  return total > 0 && static_cast<double>(used) >= static_cast<double>(total) * kNearlyFull;
}

MappingStatus JudgeThinPool(dm_pool* pool, const char* parameters) {
  dm_status_thin_pool* thin = nullptr;
  if (!dm_get_status_thin_pool(pool, parameters, &thin)) return MakeNotUnderstood("thin_pool");
  const auto is = [](Health health, const char* why) {
    return MappingStatus{.kind = "thin_pool", .health = health, .why = why};
  };
  if (thin->fail) return is(Health::Danger, "it has failed");
  if (thin->out_of_data_space) return is(Health::Danger, "it is out of space");
  if (thin->read_only) return is(Health::Danger, "it has become read-only");
  if (thin->needs_check) return is(Health::Danger, "its metadata need a check");
  if (IsNearlyFull(thin->used_data_blocks, thin->total_data_blocks))
    return is(Health::Abnormal, "95 % or more of its space is in use");
  if (IsNearlyFull(thin->used_metadata_blocks, thin->total_metadata_blocks))
    return is(Health::Abnormal, "95 % or more of its metadata space is in use");
  return is(Health::Normal, "");
}

std::optional<MappingStatus> JudgeTarget(const MappingTarget& target) {
  MappingStatus (*judge)(dm_pool*, const char*) = nullptr;
  if (target.type == "raid") judge = JudgeRaid;
  if (target.type == "mirror") judge = JudgeMirror;
  if (target.type == "thin-pool") judge = JudgeThinPool;
  if (judge == nullptr) return std::nullopt;
  const Pool pool(dm_pool_create("status", 1024), dm_pool_destroy);
  if (!pool) throw std::bad_alloc();
  return judge(pool.get(), target.parameters.c_str());
}

void Ignore(int, const char*, int, int, const char*, ...) {}

}  // namespace

void SilenceDeviceMapper() { dm_log_with_errno_init(Ignore); }

std::optional<MappingStatus> JudgeMapping(const std::vector<MappingTarget>& targets) {
  std::optional<MappingStatus> worst;
  for (const MappingTarget& target : targets) {
    auto status = JudgeTarget(target);
    if (status && (!worst || status->health > worst->health)) worst = std::move(status);
  }
  return worst;
}

}  // namespace linux_platform
