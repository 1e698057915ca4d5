// The parts that a check looks at without naming them: a machine's fans, a UPS.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/answer/parts.h"
#include "host/text/texts.h"

namespace host {

// "Fans: System fan 1 (1 180 rpm), System fan 2 (1 205 rpm)": a line a kind; what is troubled has
// one of its own, with all that is known of it.
std::vector<std::string> FormatCheckedParts(std::string_view check, const Parts& parts,
                                            const Texts& texts);

}  // namespace host
