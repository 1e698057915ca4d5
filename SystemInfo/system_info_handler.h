// One request's snapshot of the machine: eight collectors, gathered by the constructor.
#pragma once

#include "SystemInfo/ebox_status_info.h"
#include "SystemInfo/enclosure_status_info.h"
#include "SystemInfo/external_volume_info.h"
#include "SystemInfo/san_status_info.h"
#include "SystemInfo/storage_info.h"
#include "SystemInfo/system_status_info.h"
#include "SystemInfo/ups_status_info.h"
#include "SystemInfo/vela_conf_info.h"

namespace VELA::SystemHealth {

class SystemInfoHandler {
 public:
  // Complete in shape whatever fails; only exhausted memory leaves as an exception.
  SystemInfoHandler();

  const VelaConfInfo& GetVelaConfInfo() const { return velaConf_; }
  const ExternalVolumeInfo& GetExternalVolumeInfo() const { return externalVolumes_; }
  const StorageInfo& GetStorageInfo() const { return storage_; }
  const UpsStatusInfo& GetUpsStatusInfo() const { return ups_; }
  const EnclosureStatusInfo& GetEnclosureStatusInfo() const { return enclosures_; }
  const SystemStatusInfo& GetSystemStatusInfo() const { return systemStatus_; }
  const EboxStatusInfo& GetEboxStatusInfo() const { return eboxes_; }
  const SanStatusInfo& GetSanStatusInfo() const { return san_; }

 private:
  VelaConfInfo velaConf_;
  ExternalVolumeInfo externalVolumes_;
  StorageInfo storage_;
  UpsStatusInfo ups_;
  EnclosureStatusInfo enclosures_;
  SystemStatusInfo systemStatus_;
  EboxStatusInfo eboxes_;
  SanStatusInfo san_;
};

}  // namespace VELA::SystemHealth
