// Which UPSes NUT is configured for: its files belong to root and its own group.
#include "platform/linux/ups/nut_configuration.h"

#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/collector/parts.h"

namespace linux_platform {

// Where its folder is, that nobody set it up is news to who may not read that.
Json::Value CollectNut() {
  if (!PathExists(BelowRoot(kNutFolder))) return {};
  NutConfiguration nut;
  std::string reason;
  return ReadNutFiles(nut, reason) ? nut.ToJson() : MakeError(reason);
}

}  // namespace linux_platform
