#include "platform/linux/collector/mapping_status.h"

#include <libdevmapper.h>

#include <algorithm>
#include <memory>
#include <new>
#include <string_view>

#include "platform/linux/collector/mapping_words.h"

namespace linux_platform {
namespace {

constexpr double kNearlyFull = 0.95;

using Pool = std::unique_ptr<dm_pool, void (*)(dm_pool*)>;

MappingStatus MakeNotUnderstood(const char* kind) { return {.kind = kind, .understood = false}; }

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
  MappingStatus status{.kind = "raid"};
  dm_status_raid* raid = nullptr;
  if (!dm_get_status_raid(pool, parameters, &raid)) return MakeNotUnderstood("raid");
  const std::string_view layout = raid->raid_type, health = raid->dev_health;
  const auto dead = static_cast<std::size_t>(std::ranges::count(health, 'D'));
  if (dead == 0 && std::string_view(raid->sync_action) == "recover") {
    status.health = Health::Abnormal;
    status.why = std::to_string(std::ranges::count(health, 'a')) + " of " +
                 std::to_string(health.size()) + " devices are being rebuilt (" +
                 std::string(layout) + ")";
  }
  if (dead == 0) return status;
  const bool lost =
      dead > CountSpareDevices(layout, health.size()) || LostBothCopies(layout, health);
  status.health = lost ? Health::Danger : Health::Abnormal;
  status.why = std::to_string(dead) + " of " + std::to_string(health.size()) + " devices failed (" +
               std::string(layout) + ")";
  return status;
}

MappingStatus JudgeMirror(dm_pool* pool, const char* parameters) {
  MappingStatus status{.kind = "mirror"};
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

// A cache that holds what its origin does not have yet takes the volume along.
MappingStatus JudgeCache(dm_pool* pool, const char* parameters) {
  dm_status_cache* cache = nullptr;
  if (!dm_get_status_cache(pool, parameters, &cache)) return MakeNotUnderstood("cache");
  MappingStatus status{.kind = "cache"};
  if (cache->fail || cache->error) {
    status.health = Health::Danger;
    status.why = "it has failed";
  } else if (cache->needs_check || cache->read_only) {
    const bool holdsData = (cache->feature_flags & DM_CACHE_FEATURE_WRITEBACK) != 0;
    status.health = holdsData ? Health::Danger : Health::Abnormal;
    status.why = cache->needs_check ? "its metadata need a check" : "it has become read-only";
  }
  return status;
}

MappingStatus JudgeSnapshot(dm_pool* pool, const char* parameters) {
  dm_status_snapshot* snapshot = nullptr;
  if (!dm_get_status_snapshot(pool, parameters, &snapshot)) return MakeNotUnderstood("snapshot");
  MappingStatus status{.kind = "snapshot"};
  if (snapshot->merge_failed) {
    status.health = Health::Danger;
    status.why = "it could not be merged into its volume";
  }
  if (snapshot->invalid || snapshot->overflow) status.failed = status.of = 1;
  return status;
}

using ParsedByLibrary = MappingStatus (*)(dm_pool*, const char*);
constexpr std::pair<std::string_view, ParsedByLibrary> kParsedByLibrary[] = {
    {"raid", JudgeRaid},   {"mirror", JudgeMirror},     {"thin-pool", JudgeThinPool},
    {"cache", JudgeCache}, {"snapshot", JudgeSnapshot}, {"snapshot-merge", JudgeSnapshot}};

using ParsedHere = MappingStatus (*)(const std::string&);
constexpr std::pair<std::string_view, ParsedHere> kParsedHere[] = {{"multipath", JudgeMultipath},
                                                                   {"integrity", JudgeIntegrity},
                                                                   {"vdo", JudgeVdo},
                                                                   {"writecache", JudgeWriteCache}};

std::optional<MappingStatus> JudgeTarget(const MappingTarget& target) {
  for (const auto& [type, judge] : kParsedHere)
    if (target.type == type) return judge(target.parameters);
  const auto* found = std::ranges::find(kParsedByLibrary, std::string_view(target.type),
                                        [](const auto& each) { return each.first; });
  if (found == std::end(kParsedByLibrary)) return std::nullopt;
  const Pool pool(dm_pool_create("status", 1024), dm_pool_destroy);
  if (!pool) throw std::bad_alloc();
  return found->second(pool.get(), target.parameters.c_str());
}

void Ignore(int, const char*, int, int, const char*, ...) {}

}  // namespace

void SilenceDeviceMapper() { dm_log_with_errno_init(Ignore); }

bool IsNearlyFull(std::uint64_t used, std::uint64_t total) {
  return total > 0 && static_cast<double>(used) >= static_cast<double>(total) * kNearlyFull;
}

std::optional<MappingStatus> JudgeMapping(const std::vector<MappingTarget>& targets) {
  std::optional<MappingStatus> worst;
  for (const MappingTarget& target : targets) {
    auto status = JudgeTarget(target);
    const bool worse = status && (!worst || status->health > worst->health ||
                                  (worst->failed == 0 && worst->health == status->health));
    if (worse) worst = std::move(status);
  }
  return worst;
}

}  // namespace linux_platform
