// What the page asks for: the document of "get" with what stands beside it.
#pragma once

#include <string>

#include "host/loader/host.h"

namespace host {

// {"answer": the document as it is, "sources": [{"name", "state": "read", "failed" or
// "absent", "reason" if there is one}], "findings": the rules after the winner, most urgent
// first}. Throws what Host::Ask throws.
std::string PageAnswer(const Host& host, const SimulatedMachine& machine);

}  // namespace host
