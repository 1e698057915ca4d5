// A finding's description in the words of one language.
#pragma once

#include <string>

#include "host/answer/answer.h"
#include "host/text/texts.h"

namespace host {

// Names of volumes and units come out literally, whatever they hold; a placeholder or a
// reference that nothing belongs to stays as it is. The page's render.js does the same.
std::string RenderDescription(const Description& description, const Texts& texts);

}  // namespace host
