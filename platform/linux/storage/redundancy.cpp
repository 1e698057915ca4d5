#include "platform/linux/storage/redundancy.h"

#include <algorithm>

#include "common/json_reader.h"
#include "platform/linux/base/root.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

using common::FindMember, common::TextMember;

constexpr std::size_t kTableCap = std::size_t{256} << 10;

bool IsMdDevice(const std::string& name) {
  return name.starts_with("md") && PathExists(Sys("/block/", name, "/md"));
}

// `tables` holds the text of fstab and mdadm.conf.
bool IsNamed(const std::string& tables, const std::string& array) {
  constexpr std::string_view kBlanks = " \t\n";
  return HasWord(tables, "/dev/" + array, kBlanks) ||
         HasWord(tables, "/dev/md/" + array.substr(2), kBlanks);
}

// The collector has looked at the array when it was made.
bool IsFirstBuild(const MdArray& array) {
  if (!LooksLikeFirstBuild(array)) return false;
  Json::Value snapshot;
  std::string reason;
  if (ReadSnapshot("md", snapshot, reason) != SnapshotState::Read) return false;
  const Build build = GetBuildState(snapshot, array.name);
  return build == Build::First || build == Build::Unseen;
}

void AddHealth(const std::string& name, Health health, Redundancy& redundancy) {
  redundancy.health[name] = health;
  redundancy.worst = Worse(redundancy.worst, health);
}

void ReadArrays(const std::vector<std::string>& blockDevices, const std::string& fstab,
                Redundancy& redundancy) {
  std::string tables;
  for (const std::string& name : blockDevices) {
    if (!IsMdDevice(name)) continue;
    if (tables.empty()) {
      ReadSmallFile(BelowRoot("/etc/mdadm/mdadm.conf").c_str(), kTableCap, tables);
      tables.append("\n").append(fstab);
    }
    MdArray array = ReadMdArray(name);
    Health health = JudgeMd(array, IsNamed(tables, name));
    if (health == Health::Abnormal && IsFirstBuild(array)) health = Health::Normal;
    AddHealth(name, health, redundancy);
    redundancy.arrays.push_back(std::move(array));
  }
}

Health ParseHealth(const std::string& text) {
  if (text == "danger") return Health::Danger;
  return text == "abnormal" ? Health::Abnormal : Health::Normal;
}

void ReadMappings(Redundancy& redundancy) {
  Json::Value document;
  if (ReadSnapshot("device_mapper", document, redundancy.failure) != SnapshotState::Read) return;
  redundancy.failure = TextMember(document, "trouble");
  const Json::Value* objects = FindMember(document, "objects");
  if (objects == nullptr || !objects->isArray()) return;
  for (const Json::Value& object : *objects) {
    const Health health = ParseHealth(TextMember(object, "health"));
    if (health == Health::Normal) continue;
    const std::string folder = LinkTarget(Sys("/dev/block/", TextMember(object, "device")));
    if (!folder.empty()) AddHealth(std::string(LastComponent(folder)), health, redundancy);
  }
}

}  // namespace

Health Redundancy::GetHealth(const Stack& stack) const {
  Health worstLayer = Health::Normal;
  for (const std::string& layer : stack.layers) {
    const auto known = health.find(layer);
    if (known != health.end()) worstLayer = Worse(worstLayer, known->second);
  }
  return worstLayer;
}

Redundancy ReadRedundancy(const std::vector<std::string>& blockDevices, const std::string& fstab) {
  Redundancy redundancy;
  ReadArrays(blockDevices, fstab, redundancy);
  const auto isMapping = [](const std::string& name) { return name.starts_with("dm-"); };
  if (std::ranges::any_of(blockDevices, isMapping)) ReadMappings(redundancy);
  return redundancy;
}

}  // namespace linux_platform
