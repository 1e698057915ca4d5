#include "platform/linux/notes/notes.h"

namespace linux_platform {

void GatherNotes() {}

}  // namespace linux_platform
