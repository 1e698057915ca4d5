#include "module/explain/inputs.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "SystemChecker/predicates.h"
#include "common/number.h"

namespace VELA::SystemHealth::Explain {
namespace {

// A list that stays an array when it is empty.
template <typename List, typename Convert>
Json::Value ListOf(const List& list, Convert convert) {
  Json::Value array(Json::arrayValue);
  for (const auto& element : list) array.append(convert(element));
  return array;
}

Json::Value Supplies(const std::array<bool, 2>& ok) {
  Json::Value array(Json::arrayValue);
  for (const bool works : ok) array.append(works ? "works" : "failed");
  return array;
}

// {"unit", "free", "total", "mark": as many of the unit, "share": the mark as one of the total,
// "low": whether what is free is below the mark}.
Json::Value Comparison(const char* unit, std::uint64_t free, std::uint64_t total, double share,
                       bool low) {
  Json::Value comparison;
  comparison["unit"] = unit;
  comparison["free"] = Json::UInt64(free);
  comparison["total"] = Json::UInt64(total);
  comparison["mark"] = Json::UInt64(common::ToSize(share * static_cast<double>(total)).value_or(0));
  comparison["share"] = share;
  comparison["low"] = low;
  return comparison;
}

// Without a share for inodes these were not looked at.
Json::Value InputOf(const VolumeUsageInfo& volume, std::optional<double> inodeShare) {
  const _tag_volume_usage& usage = volume.usage;
  Json::Value input;
  input["volume"] = volume.volumeId;
  if (volume.status != "normal") {  // then its space is not judged
    input["status"] = volume.status;
    return input;
  }
  const std::uint64_t free = usage.u1 > usage.u0 ? usage.u1 - usage.u0 : 0;
  // The shortest decimals of the platform's float: 0.05 is not 0.0500000007.
  const double share = std::round(double{volume.warningRatio} * 1e6) / 1e6;
  input["compared"].append(Comparison("bytes", free, usage.u1, share, volume.WarningOutOfSpace()));
  if (inodeShare)
    input["compared"].append(Comparison("inodes", usage.u3, usage.u2, *inodeShare,
                                        volume.WarningOutOfInode(*inodeShare)));
  return input;
}

Json::Value InputOf(const DiskStatus& disk) {
  Json::Value input;
  input["disk"] = disk.name;
  input["status"] = disk.status;
  input["in use"] = disk.inUse;
  input["remotely disconnected"] = disk.remoteDisconnected;
  return input;
}

}  // namespace

Json::Value VolumeUsageInputs(const SystemInfoHandler& info) {
  const VelaConfInfo& conf = info.GetVelaConfInfo();
  const auto& volumes = info.GetStorageInfo().GetVolumes();
  std::optional<double> inodeShare;  // where space is low the checker looks no further
  if (std::ranges::none_of(volumes, &VolumeUsageInfo::WarningOutOfSpace))
    inodeShare = conf.PeekDouble(kInodeMarkKey, kUsualMark);
  Json::Value inputs;
  inputs["model without bays"] = HasNoBays(conf);
  inputs["volumes"] = ListOf(
      volumes, [inodeShare](const VolumeUsageInfo& volume) { return InputOf(volume, inodeShare); });
  return inputs;
}

Json::Value ExternalVolumeInputs(const SystemInfoHandler& info) {
  const VelaConfInfo& conf = info.GetVelaConfInfo();
  Json::Value inputs;
  inputs["volumes"] = Json::arrayValue;
  bool found = false;
  for (const ExternalVolumeType type : kExternalVolumeTypes) {
    if (found) break;  // the checker looks no further
    const double mark = conf.PeekDouble(ExternalVolumeMarkKey(type), kUsualMark);
    for (const ExternalVolume& volume : info.GetExternalVolumeInfo().GetExternalVolumes(type)) {
      const bool low = IsShortOfSpace(volume, mark);
      found = found || low;
      Json::Value input;
      input["volume"] = volume.volume;
      input["compared"].append(Comparison("bytes", volume.freeSize, volume.totalSize, mark, low));
      inputs["volumes"].append(std::move(input));
    }
  }
  return inputs;
}

Json::Value DiskStatusInputs(const SystemInfoHandler& info) {
  Json::Value inputs;
  inputs["disks"] = ListOf(info.GetStorageInfo().GetDisksStatus(),
                           [](const DiskStatus& disk) { return InputOf(disk); });
  return inputs;
}

Json::Value StorageOverviewInputs(const SystemInfoHandler& info) {
  constexpr const char* kWords[] = {"normal", "abnormal", "danger"};
  Json::Value inputs;
  inputs["overview"] = kWords[static_cast<int>(info.GetStorageInfo().GetStorageOverviewStatus())];
  return inputs;
}

Json::Value UpsInputs(const SystemInfoHandler& info) {
  const UpsInfo& ups = info.GetUpsStatusInfo().GetUpsInfo();
  Json::Value inputs;
  inputs["enabled"] = ups.upsEnabled;
  inputs["connected"] = ups.upsConnected;
  inputs["state"] = ups.status;
  return inputs;
}

Json::Value EnclosureInputs(const SystemInfoHandler&) { return Json::objectValue; }

Json::Value SystemStatusInputs(const SystemInfoHandler& info) {
  const SystemStatusInfo& status = info.GetSystemStatusInfo();
  Json::Value inputs;
  inputs["fan failed"] = status.fanFail;
  inputs["processor fan failed"] = status.cpuFanFail;
  inputs["power failed"] = status.powerFail;
  inputs["security scan"] = status.securityScanStatus;
  inputs["too hot"] = status.temperatureWarning;
  inputs["web server failed"] = status.webServerFailed;
  inputs["system volume crashed"] = status.systemCrashed;
  if (status.redundantPower) inputs["power supplies"] = Supplies(status.powerSupplyOk);
  return inputs;
}

Json::Value ExpansionUnitInputs(const SystemInfoHandler& info) {
  Json::Value inputs;
  inputs["units"] = ListOf(info.GetEboxStatusInfo().GetEboxes(), [](const auto& unit) {
    Json::Value input;
    input["unit"] = unit.name;
    input["fan failed"] = unit.fanFail;
    input["power supplies"] = Supplies(unit.powerSupplyOk);
    return input;
  });
  return inputs;
}

Json::Value ClusterInputs(const std::optional<std::string>& status) {
  Json::Value inputs;
  inputs["running"] = status.has_value();
  if (status) inputs["status"] = *status;
  return inputs;
}

Json::Value SanInputs(const SystemInfoHandler& info) {
  const SanStatusInfo& san = info.GetSanStatusInfo();
  Json::Value inputs;
  inputs["low-capacity write"] = san.IsEnableLowCapacityWrite();
  inputs["LUNs"] = ListOf(san.GetLunsStatus(), [](const LunInfo& lun) {
    Json::Value input;
    input["LUN"] = lun.name;
    input["status"] = lun.status;
    input["on"] = lun.location;
    return input;
  });
  inputs["volumes"] = ListOf(san.GetVolumesStatus(), [](const VolumeInfo& volume) {
    Json::Value input;
    input["volume"] = volume.path;
    // Only a tenth tells apart here; which limit a low volume has reached is in the finding.
    input["compared"].append(
        Comparison("bytes", volume.freeSize, volume.totalSize, kSanMark, IsShortOfSpace(volume)));
    return input;
  });
  return inputs;
}

}  // namespace VELA::SystemHealth::Explain
