#include "host/answer/derived_evidence.h"

#include <algorithm>
#include <cmath>

#include "common/json_reader.h"
#include "common/text.h"

namespace host {
namespace {

using common::FindMember, common::TextMember;

const Json::Value& GetList(const Json::Value& saw, const char* name) {
  static const Json::Value kNone(Json::arrayValue);
  const Json::Value* list = FindMember(saw, name);
  return list != nullptr && list->isArray() ? *list : kNone;
}

bool IsTrue(const Json::Value& value, const char* name) {
  const Json::Value* member = FindMember(value, name);
  return member != nullptr && member->isBool() && member->asBool();
}

double GetNumber(const Json::Value& value, const char* name) {
  const Json::Value* member = FindMember(value, name);
  return member != nullptr && member->isNumeric() ? member->asDouble() : 0;
}

VELAEvidence MakeRecord(const char* key, const CheckerResult& result, const std::string& part) {
  VELAEvidence record;
  common::FillField(record.key, key);
  common::FillField(record.check, result.name);
  common::FillField(record.part, part);
  return record;
}

// Whole per cent: the free share rounded down, its mark to the nearest.
void FillShare(const Json::Value& compared, VELAEvidence& record) {
  const double total = GetNumber(compared, "total");
  if (total > 0)
    record.figure =
        static_cast<std::int64_t>(std::floor(100 * GetNumber(compared, "free") / total));
  record.mark = std::llround(100 * GetNumber(compared, "share"));
}

// Each comparison that found the volume low; `prefix` makes the document's name of it.
void AddVolumes(const CheckerResult& result, const char* prefix, Evidence& evidence) {
  for (const Json::Value& volume : GetList(result.saw, "volumes"))
    for (const Json::Value& compared : GetList(volume, "compared")) {
      if (!IsTrue(compared, "low")) continue;
      const bool inodes = TextMember(compared, "unit") == "inodes";
      evidence.records.push_back(MakeRecord(inodes ? "inodes_low" : "volume_low", result,
                                            prefix + TextMember(volume, "volume")));
      FillShare(compared, evidence.records.back());
    }
}

void AddDisks(const CheckerResult& result, Evidence& evidence) {
  for (const Json::Value& disk : GetList(result.saw, "disks")) {
    const std::string name = TextMember(disk, "disk");
    if (TextMember(disk, "status") == "system_crashed")
      evidence.records.push_back(MakeRecord("disk_failed", result, name));
    if (IsTrue(disk, "in use") && IsTrue(disk, "remotely disconnected"))
      evidence.records.push_back(MakeRecord("disk_disconnected", result, name));
  }
}

// Of the volume that a LUN lies on.
void FillVolume(const Json::Value& saw, const std::string& path, VELAEvidence& record) {
  for (const Json::Value& volume : GetList(saw, "volumes"))
    if (TextMember(volume, "volume") == path)
      for (const Json::Value& compared : GetList(volume, "compared")) FillShare(compared, record);
}

// The LUNs that decide. Where none does, writing to full volumes is allowed, as the finding says.
void AddLuns(const CheckerResult& result, Evidence& evidence) {
  const bool crashed = result.finding->TextKey().find("crash") != std::string::npos;
  for (const Json::Value& lun : GetList(result.saw, "LUNs")) {
    if (GetList(lun, "decides").empty()) continue;
    const std::string path = TextMember(lun, "on");
    VELAEvidence& record = evidence.records.emplace_back(
        MakeRecord(crashed ? "lun_crashed" : "lun_low", result, TextMember(lun, "LUN")));
    common::FillField(record.path, path);
    common::FillField(record.show, "targetcli ls");
    if (!crashed) FillVolume(result.saw, path, record);
  }
}

}  // namespace

void AddDerivedEvidence(const std::vector<CheckerResult>& checkers, Evidence& evidence) {
  for (const CheckerResult& result : checkers) {
    const bool told = std::ranges::any_of(evidence.records, [&result](const VELAEvidence& each) {
      return result.name == each.check;
    });
    if (!result.finding || told) continue;
    if (result.name == "volume usage") AddVolumes(result, "volume_", evidence);
    if (result.name == "external volumes") AddVolumes(result, "", evidence);
    if (result.name == "disks") AddDisks(result, evidence);
    if (result.name == "SAN") AddLuns(result, evidence);
  }
}

Evidence GatherEvidence(const Platform& platform, const std::vector<CheckerResult>& checkers) {
  Evidence evidence = {platform.ReadParts(), platform.ReadEvidence()};
  AddDerivedEvidence(checkers, evidence);
  return evidence;
}

}  // namespace host
