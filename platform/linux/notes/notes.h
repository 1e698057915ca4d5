// What is worth a note beside the answer on plain Linux.
#pragma once

namespace linux_platform {

// Adds this thread's notes: a few small reads, and only when a person asks.
void GatherNotes();

}  // namespace linux_platform
