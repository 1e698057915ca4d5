// A finding's description in the words of one language.
#pragma once

#include <string>

#include "host/answer.h"
#include "host/texts.h"

namespace vela::host {

// Names of volumes and units come out literally, whatever they hold; a placeholder or a
// reference that nothing belongs to stays as it is. The page's render.js does the same.
std::string Render(const Description& description, const Texts& texts);

// For a terminal: control characters and those that turn the direction of writing, which
// a name may hold, become U+FFFD.
std::string Harmless(std::string_view text);

}  // namespace vela::host
