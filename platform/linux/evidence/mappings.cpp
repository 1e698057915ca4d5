// Mappings of the kernel's device mapper that lost something, or ran full.
#include <algorithm>
#include <charconv>

#include "common/text.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/evidence/cause.h"

namespace linux_platform {
namespace {

struct MappingCause {
  std::string_view why;  // a part of the collector's words; the first that fits counts
  const char* key;
  const char* mend;  // of the volume "vg0/data"; null: a person has to think first
};

constexpr MappingCause kCauses[] = {
    {"devices failed", "mapping_degraded", "lvconvert --repair {}"},
    {"copies failed", "mapping_degraded", "lvconvert --repair {}"},
    {"being rebuilt", "mapping_rebuilding", nullptr},
    {"path", "mapping_no_path", nullptr},
    {"out of space", "mapping_full", "lvextend -L +SIZE {}"},
    {"metadata space", "mapping_metadata_full", "lvextend --poolmetadatasize +SIZE {}"},
    {"of its space", "mapping_nearly_full", "lvextend -L +SIZE {}"},
    {"need a check", "mapping_needs_check", "lvconvert --repair {}"},
    {"read-only", "mapping_read_only", nullptr},
    {"did not match", "mapping_checksums", nullptr},
    {"physical volume", "mapping_part_missing", nullptr},
    {"", "mapping_failed", nullptr},
};

// The volume as LVM's commands take it: "vg0/data" of "vg0-data", "vg-0/pool" of
// "vg--0-pool-tpool". "" of what is none of LVM's.
std::string ToVolume(std::string_view name, std::string_view uuid) {
  if (!uuid.starts_with("LVM-")) return {};
  for (const std::string_view layer : {"-tpool", "-vpool", "-cdata", "-cvol", "-cow"})
    if (name.ends_with(layer)) name.remove_suffix(layer.size());
  name = name.substr(0, name.find("-missing_"));
  std::string volume;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const bool dash = name[i] == '-', doubled = dash && i + 1 < name.size() && name[i + 1] == '-';
    volume += dash && !doubled ? '/' : name[i];
    if (doubled) ++i;
  }
  return volume;
}

// "1 of 3 devices failed": 1 and 3.
void FillFigures(std::string_view why, VELAEvidence& record) {
  const auto read = [](std::string_view text, std::int64_t& figure) {
    std::from_chars(text.data(), text.data() + text.size(), figure);
  };
  const std::size_t digit = why.find_first_of("0123456789"), of = why.find(" of ");
  if (digit != why.npos) read(why.substr(digit), record.figure);
  if (of != why.npos) read(why.substr(of + 4), record.mark);
}

void AddCommands(const Mapping& mapping, const MappingCause& cause, VELAEvidence& record) {
  const std::string volume = ToVolume(mapping.name, mapping.uuid);
  const std::string group = volume.substr(0, volume.find('/'));
  if (mapping.kind == "multipath") {
    SetShow(record, WriteCommand("multipath -ll {}", {mapping.name}));
    SetMend(record, {"multipathd reconfigure"});
  } else if (volume.empty()) {
    SetShow(record, WriteCommand("dmsetup status {}", {mapping.name}));
  } else {
    SetShow(record, WriteCommand("lvs -a -o +lv_health_status,devices {}", {group}));
    // The copy goes to a disk of its group, which counts the old one until that is taken out.
    if (std::string_view(cause.key) == "mapping_degraded")
      SetMend(record, {WriteCommand("vgextend {} /dev/NEW-DISK", {group}),
                       WriteCommand(cause.mend, {volume}),
                       WriteCommand("vgreduce --removemissing {}", {group})});
    else if (cause.mend != nullptr)
      SetMend(record, {WriteCommand(cause.mend, {volume})});
    if (std::string_view(cause.key) == "mapping_part_missing")
      SetMend(record,
              {WriteCommand("vgextend --restoremissing {} /dev/DISK-THAT-IS-BACK", {group})});
  }
}

VELAEvidence Describe(const Mapping& mapping) {
  const auto* cause = std::ranges::find_if(kCauses, [&mapping](const MappingCause& each) {
    return mapping.why.find(each.why) != std::string::npos;
  });
  VELAEvidence record = MakeEvidence(cause->key, kOverview, mapping.name);
  common::FillField(record.words, mapping.why);
  FillFigures(mapping.why, record);
  AddCommands(mapping, *cause, record);
  return record;
}

// Of a part that LVM could not find the collector would have told; everybody sees it.
Mapping FindMapping(const StorageView& view, const std::string& device) {
  for (const Mapping& mapping : view.redundancy.mappings)
    if (LastComponent(LinkTarget(Sys("/dev/block/", mapping.device))) == device) return mapping;
  const std::string folder = Sys("/block/", device, "/dm");
  Mapping mapping;
  mapping.name = Attribute(Within(folder, "name"));
  mapping.uuid = Attribute(Within(folder, "uuid"));
  mapping.kind = "missing";
  mapping.why = "the physical volume that held it is missing";
  return mapping;
}

}  // namespace

void AddMappings(const StorageView& view, Causes& causes) {
  for (const auto& [device, health] : view.redundancy.health) {
    if (health == Health::Normal || !device.starts_with("dm-")) continue;
    Mapping mapping = FindMapping(view, device);
    if (mapping.name.empty()) mapping.name = device;
    causes.push_back({health, Describe(mapping)});
  }
}

}  // namespace linux_platform
