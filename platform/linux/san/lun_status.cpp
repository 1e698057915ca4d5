#include "platform/linux/san/lun_status.h"

namespace linux_platform {

const char* StatusOf(const LunEvidence& lun) {
  if (!lun.isConfigured || !lun.hasStorage || lun.isHostCrashed) return "Unhealthy";
  if (!lun.isEnabled) return "unavailabling";
  if (lun.isThin && lun.isHostFull) return "low_space";
  return "normal";
}

}  // namespace linux_platform
