#include "platform/linux/parts/parts.h"

namespace linux_platform {

void TellStorageParts(const StorageView&, const TakePart&) {}

}  // namespace linux_platform
