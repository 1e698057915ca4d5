#include "platform/linux/ups/ups_status.h"

#include "platform/linux/notes/notes.h"
#include "platform/linux/notes/tell.h"

namespace linux_platform {
namespace {

struct WordKind {
  std::string_view word;
  NoteKind kind;
};
// The weightier first.
constexpr WordKind kWords[] = {{"OFF", kUpsOff},
                               {"OVER", kUpsOverloaded},
                               {"BYPASS", kUpsBypass},
                               {"RB", kUpsBattery},
                               {"ALARM", kUpsAlarm}};

}  // namespace

void TellUpsNotes(const std::string& name, std::string_view words) {
  for (const auto& [word, kind] : kWords)
    if (HasUpsWord(words, word)) Tell(kind, name, name);
}

}  // namespace linux_platform
