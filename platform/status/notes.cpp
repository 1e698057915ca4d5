#include "platform/status/notes.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <iterator>

namespace source_status {
namespace {

struct Notes {
  std::array<VELANote, kVELANotes> list;
  int count = 0;
};

thread_local constinit Notes notes;

// The field holds zeros, the last of which stays.
template <std::size_t Size>
void Fill(char (&field)[Size], std::string_view text) {
  text.copy(field, Size - 1);
}

}  // namespace

void AddNote(const char* key, std::string_view part, std::int64_t figure, std::int64_t mark,
             const char* command) {
  VELANote note;
  Fill(note.key, key);
  Fill(note.part, part);
  Fill(note.command, command);
  note.figure = figure;
  note.mark = mark;
  const auto end = notes.list.begin() + notes.count;
  const bool known = std::any_of(notes.list.begin(), end, [&note](const VELANote& other) {
    return std::strcmp(other.key, note.key) == 0 && std::strcmp(other.part, note.part) == 0;
  });
  if (known || notes.count == kVELANotes) return;
  *end = note;
  ++notes.count;
}

void ForgetNotes() { notes.count = 0; }

int CopyNotes(VELANote* copies, int capacity) {
  std::copy_n(notes.list.begin(), std::min(capacity, notes.count), copies);
  return notes.count;
}

}  // namespace source_status
