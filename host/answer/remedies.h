// What to type about a finding.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/answer/answer.h"
#include "host/answer/evidence.h"

namespace host {

// At most three: what saves data comes first, then what shows, then what mends. Words in capitals
// stand for names: "mdadm /dev/ARRAY --add /dev/NEW-DISK". They are the same in every language,
// and none destroys data as it stands. Empty: there is nothing to type.
std::span<const std::string_view> ListGenericCommands(const Finding& finding);

// What mends the causes, each command once; where no cause knows, the generic ones that none of
// them shows already. The copy of data in danger comes before either.
std::vector<std::string> ChooseCommands(const Finding& finding,
                                        const std::vector<ToldCause>& causes);

}  // namespace host
