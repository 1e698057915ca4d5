#include "module/explain/inputs.h"

#include <string>

#include "SystemInfo/system_info_handler.h"
#include "velac.h"

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

Json::Value Uint(std::uint64_t value) { return Json::Value(Json::UInt64(value)); }

Json::Value InputOf(const VolumeUsageInfo& volume) {
  Json::Value input;
  input["volume"] = volume.spaceId;
  input["status"] = volume.status;
  input["used/total"] = std::to_string(volume.usage.u0) + "/" + std::to_string(volume.usage.u1);
  input["free inodes/inodes"] =
      std::to_string(volume.usage.u3) + "/" + std::to_string(volume.usage.u2);
  input["warns below"] = volume.warningRatio;
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
  Json::Value inputs;
  inputs["model without bays"] = info.GetVelaConfInfo().DefCheckValue("maxdisks", "0", false);
  inputs["volumes"] = ListOf(info.GetStorageInfo().GetVolumes(),
                             [](const VolumeUsageInfo& volume) { return InputOf(volume); });
  return inputs;
}

Json::Value ExternalVolumeInputs(const SystemInfoHandler& info) {
  Json::Value inputs;
  inputs["volumes"] = info.GetExternalVolumeInfo().ToJson();
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

Json::Value ClusterInputs(const SystemInfoHandler&) {
  Json::Value inputs;
  inputs["running"] = VELAHAIsRunning() != 0;
  if (!inputs["running"].asBool()) return inputs;
  char status[1024] = {};
  VELAHAGetOverviewStatusDL(status, sizeof status);
  status[sizeof status - 1] = '\0';
  inputs["status"] = status;
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
    input["free"] = Uint(volume.freeSize);
    input["total"] = Uint(volume.totalSize);
    return input;
  });
  return inputs;
}

}  // namespace VELA::SystemHealth::Explain
