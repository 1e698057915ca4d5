// Storage that is configured and not there.
#include <algorithm>

#include "common/text.h"
#include "platform/linux/evidence/cause.h"

namespace linux_platform {
namespace {

using Kind = MissingStorage::Kind;

std::string NamePart(const StorageView& view, const MissingStorage& missing) {
  if (missing.kind != Kind::Mount) return missing.name;
  const auto volume = std::ranges::find(view.volumes, missing.path, &InternalVolume::path);
  return volume != view.volumes.end() ? NameVolume(*volume) : missing.path;
}

VELAEvidence DescribeMount(const StorageView& view, const MissingStorage& missing) {
  VELAEvidence record = MakeEvidence("volume_missing", kOverview, NamePart(view, missing));
  common::FillField(record.words, missing.name);
  common::FillField(record.path, "/etc/fstab");
  SetShow(record, "lsblk -f");
  SetMend(record, {WriteCommand("mount {}", {missing.path})});
  return record;
}

VELAEvidence DescribeArray(const MissingStorage& missing) {
  VELAEvidence record = MakeEvidence("array_missing", kOverview, missing.name);
  common::FillField(record.path, "mdadm.conf");
  SetShow(record, "mdadm --examine --scan");
  SetMend(record, {"mdadm --assemble --scan"});
  return record;
}

VELAEvidence DescribeGroup(const StorageView& view, const MissingStorage& missing) {
  VELAEvidence record = MakeEvidence("group_incomplete", kOverview, missing.name);
  for (const ExpectedSnapshot::Group& group : view.redundancy.groups)
    if (group.name == missing.name) common::FillField(record.words, group.why);
  SetShow(record, WriteCommand("vgs -o +vg_missing_pv_count {}", {missing.name}));
  SetMend(record,
          {WriteCommand("vgextend --restoremissing {} /dev/DISK-THAT-IS-BACK", {missing.name})});
  return record;
}

VELAEvidence DescribePool(const MissingStorage& missing) {
  VELAEvidence record = MakeEvidence("pool_missing", kOverview, missing.name);
  SetShow(record, "zpool import");
  SetMend(record, {WriteCommand("zpool import {}", {missing.name})});
  return record;
}

VELAEvidence Describe(const StorageView& view, const MissingStorage& missing) {
  switch (missing.kind) {
    case Kind::Mount:
      return DescribeMount(view, missing);
    case Kind::Array:
      return DescribeArray(missing);
    case Kind::Group:
      return DescribeGroup(view, missing);
    case Kind::Pool:
      break;
  }
  return DescribePool(missing);
}

}  // namespace

void AddMissing(const StorageView& view, Causes& causes) {
  for (const MissingStorage& missing : view.missing)
    if (missing.health != Health::Normal)
      causes.push_back({missing.health, Describe(view, missing)});
}

}  // namespace linux_platform
