// How notes are told: through the platform's status, by one of the kinds.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/linux/notes/note_kinds.h"

namespace linux_platform {

// `part` is what people call it, `object` what the kind's command is given. `figure` was held
// against `mark`; 0: there is none.
void Tell(const NoteKind& kind, std::string_view part, std::string_view object,
          std::int64_t figure = 0, std::int64_t mark = 0);

}  // namespace linux_platform
