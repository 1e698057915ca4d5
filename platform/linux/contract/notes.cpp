// The notes beside the answer, for the host.
#include "platform/status/notes.h"

#include "platform/linux/notes/notes.h"

int VELAPlatformNotes(VELANote* notes, int capacity) {
  linux_platform::GatherNotes();
  return source_status::CopyNotes(notes, capacity);
}
