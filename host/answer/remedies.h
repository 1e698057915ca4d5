// What to type about a finding where nobody tells the names of the machine's own parts.
#pragma once

#include <span>
#include <string_view>

#include "host/answer/answer.h"

namespace host {

// At most three: what saves data comes first, then what shows, then what mends. Words in capitals
// stand for names: "mdadm /dev/ARRAY --add /dev/NEW-DISK". They are the same in every language,
// and none destroys data as it stands. Empty: there is nothing to type.
std::span<const std::string_view> ListGenericCommands(const Finding& finding);

}  // namespace host
