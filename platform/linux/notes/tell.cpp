#include "platform/linux/notes/tell.h"

#include "platform/linux/base/root.h"
#include "platform/status/notes.h"

namespace linux_platform {

void Tell(const NoteKind& kind, std::string_view part, std::string_view object, std::int64_t figure,
          std::int64_t mark) {
  constexpr std::string_view kObject = "%s";
  const std::string_view command = kind.command;
  const std::size_t at = command.find(kObject);
  const std::string whole = at == command.npos ? std::string(command)
                                               : Concatenate(command.substr(0, at), object,
                                                             command.substr(at + kObject.size()));
  source_status::AddNote(kind.key, part, figure, mark, whole.c_str());
}

}  // namespace linux_platform
