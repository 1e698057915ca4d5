#include "SystemInfo/system_status_info.h"

#include <bit>
#include <string_view>

#include <vela_storage.h>
#include <vela_webserver.h>
#include <velac.h>

#include "common/json_reader.h"
#include "common/text.h"
#include "module/base/log.h"

namespace VELA::SystemHealth {
namespace {

constexpr LogPosition kNoSupportKey{"SystemInfo/system_status_info", 27};
constexpr LogPosition kHttpQueryFailed{"SystemInfo/system_status_info", 138};

constexpr int kFan = 1;
constexpr int kPower = 4;
constexpr int kCpuFan = 6;

constexpr const char* kDefaultsFile = "/etc.defaults/velainfo.conf";
constexpr const char* kTemperatureKey = "supportsystempwarning";
constexpr const char* kSecurityScanFile = "/var/lib/securityscan/systemResult.json";

bool HasFailed(const VELA_SYS_STATUS& status, int component, unsigned& detail) {
  detail = 0;
  return VELAIsComponentFail(&status, component, &detail) == 1;
}

}  // namespace

void SystemStatusInfo::Init() {
  LoadVelaSysStatus();
  LoadSystemCrashed();
  LoadTemperatureWarning();
  LoadApacheStatus();
  LoadSecurityScan();
}

void SystemStatusInfo::LoadVelaSysStatus() {
  VELA_SYS_STATUS status = {};
  VELASysStatusGet(&status);
  unsigned detail = 0;
  powerFail = HasFailed(status, kPower, detail);
  fanFail = HasFailed(status, kFan, detail);
  cpuFanFail = HasFailed(status, kCpuFan, detail);

  redundantPower = VELARedundantPowerSupport() != 0;
  if (redundantPower) LoadPowerSupplies(status);
}

// A single-failure report: of several failed supplies only the first is marked.
void SystemStatusInfo::LoadPowerSupplies(const VELA_SYS_STATUS& status) {
  powerSupplyOk = {true, true};
  unsigned detail = 0;
  if (!HasFailed(status, kPower, detail)) return;
  const auto lowest = static_cast<std::size_t>(std::countr_zero(detail >> 8U));
  if (lowest < powerSupplyOk.size()) powerSupplyOk[lowest] = false;
}

bool SystemStatusInfo::LoadSystemCrashed() {
  systemCrashed = ZRT::STORAGE_WEBUTILS::Volume::IsSystemVolCrashed();
  return systemCrashed;
}

void SystemStatusInfo::LoadTemperatureWarning() {
  char supported[32] = {};
  if (VLIBCFileGetKeyValue(kDefaultsFile, kTemperatureKey, supported, sizeof supported, 0) < 0) {
    LogError(kNoSupportKey, "Failed to get support key: [%s]", kTemperatureKey);
    return;
  }
  if (common::ViewText(supported) != "yes") return;

  int state = 0;
  if (VELAHWSysTempWarning(&state) == 0) temperatureWarning = state == 1;
}

void SystemStatusInfo::LoadApacheStatus() {
  const int isDefault = VELAServiceIsHttpDefaultConf();
  if (isDefault < 0) {
    LogError(kHttpQueryFailed, "Failed to get VELAServiceIsHttpDefaultConf.");
    return;
  }
  if (isDefault == 0) return;

  velaw3::NginxConfManager manager(velaw3::NGINXCONF_APPLY);
  if (!manager.run()) webServerFailed = true;
}

void SystemStatusInfo::LoadSecurityScan() {
  Json::Value result;
  if (common::ReadJsonFile(kSecurityScanFile, result))
    securityScanStatus = common::TextMember(result, "sysStatus");
}

}  // namespace VELA::SystemHealth
