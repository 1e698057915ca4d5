#include "platform/linux/parts/parts.h"

namespace linux_platform {

void TellInterfaceParts(const std::vector<Interface>&, const TakePart&) {}

}  // namespace linux_platform
