// The machine's own health: hardware components, temperature, system volume, web server
// and security scan.
#pragma once

#include <array>
#include <string>

#include "SystemInfo/abstract_info.h"

struct VELA_SYS_STATUS;

namespace VELA::SystemHealth {

class SystemStatusInfo : public AbstractInfo {
 public:
  void Init() override;

  bool powerFail = false;
  bool fanFail = false;
  bool cpuFanFail = false;
  bool systemCrashed = false;
  bool temperatureWarning = false;
  bool webServerFailed = false;
  std::string securityScanStatus;  // "danger", ...; "" when unknown
  bool redundantPower = false;
  std::array<bool, 2> powerSupplyOk = {};  // meaningful with redundantPower only

 private:
  void LoadVelaSysStatus();
  bool LoadSystemCrashed();
  void LoadTemperatureWarning();
  void LoadApacheStatus();
  void LoadSecurityScan();

  void LoadPowerSupplies(const VELA_SYS_STATUS& status);
};

}  // namespace VELA::SystemHealth
