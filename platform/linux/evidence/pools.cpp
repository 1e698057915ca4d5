// ZFS pools that lost something, or have met errors.
#include "common/text.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/evidence/cause.h"

namespace linux_platform {
namespace {

VELAEvidence Describe(const Zpool& pool) {
  const std::string state = Attribute(BelowRoot("/proc/spl/kstat/zfs/", pool.name, "/state"));
  const bool errors = state.empty() || state == "ONLINE";
  VELAEvidence record = MakeEvidence(errors                          ? "pool_errors"
                                     : pool.health == Health::Danger ? "pool_down"
                                                                     : "pool_degraded",
                                     kOverview, pool.name);
  common::FillField(record.words, state);
  SetShow(record, WriteCommand("zpool status -v {}", {pool.name}));
  if (errors)
    SetMend(record, {WriteCommand("zpool clear {}", {pool.name}),
                     WriteCommand("zpool scrub {}", {pool.name})});
  else if (pool.health == Health::Danger)
    SetMend(record, {WriteCommand("zpool clear {}", {pool.name})});
  else
    SetMend(record, {WriteCommand("zpool replace {} OLD-DISK /dev/NEW-DISK", {pool.name})});
  return record;
}

}  // namespace

void AddPools(const StorageView& view, Causes& causes) {
  for (const Zpool& pool : view.pools)
    if (pool.health != Health::Normal) causes.push_back({pool.health, Describe(pool)});
}

}  // namespace linux_platform
