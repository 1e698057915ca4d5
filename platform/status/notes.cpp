#include "platform/status/notes.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

#include "common/text.h"

namespace source_status {
namespace {

struct Notes {
  std::array<VELANote, kVELANotes> list;
  int count = 0;
};

thread_local constinit Notes notes;

}  // namespace

void AddNote(const char* key, std::string_view part, std::int64_t figure, std::int64_t mark,
             const char* command) {
  VELANote note;
  common::FillField(note.key, key);
  common::FillField(note.part, part);
  common::FillField(note.command, command);
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
