#include "SystemInfo/ups_status_info.h"

#include <velac.h>

#include "module/base/log.h"

namespace VELA::SystemHealth {
namespace {

constexpr LogPosition kQueryFailed{"SystemInfo/ups_status_info", 19};

UpsInfo FromRecord(const VELA_UPS_INFO& record) {
  return {record.state, record.enabled == 1, record.connected != 0};
}

}  // namespace

void UpsStatusInfo::Init() { LoadUpsStatus(); }

void UpsStatusInfo::LoadUpsStatus() {
  VELA_UPS_INFO record = {};
  if (VELAUPSInfoGet(&record) != 0) {
    LogError(kQueryFailed, "Failed to get UPS info. velaerr=0x%04X", VLIBCErrGet());
    return;
  }
  ups_ = FromRecord(record);
}

}  // namespace VELA::SystemHealth
