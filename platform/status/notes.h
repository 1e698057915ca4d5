// Notes: what a platform tells beside the answer that no finding may carry. A note changes neither
// the document nor the exit status. Per thread, since the last reset of the sources.
#pragma once

#include <cstdint>
#include <string_view>

// --- The border to the host, found with dlsym. A platform may lack it.

struct VELANote {
  char key[32] = {};        // names its text: "nvme_worn"
  char part[96] = {};       // who it is about; may be empty
  std::int64_t figure = 0;  // what was read
  std::int64_t mark = 0;    // what it was held against; 0: nothing
  char command[160] = {};   // shows it; may be empty
};
static_assert(sizeof(VELANote) == 32 + 96 + 8 + 8 + 160);

constexpr int kVELANotes = 16;  // no request has more

extern "C" {
// Looks for what is worth a note, now: only a person's question is worth these reads. Copies up
// to `capacity` notes in the order of their finding, and returns how many there are.
__attribute__((visibility("default"))) int VELAPlatformNotes(VELANote* notes, int capacity);
}

// --- The platforms' side. Nothing here allocates or throws.

namespace source_status {

// The same key and part count once, and texts are cut to their place. What comes when there is no
// more room is dropped.
void AddNote(const char* key, std::string_view part, std::int64_t figure, std::int64_t mark,
             const char* command);
void ForgetNotes();
// As VELAPlatformNotes, of what was added so far.
int CopyNotes(VELANote* notes, int capacity);

}  // namespace source_status
