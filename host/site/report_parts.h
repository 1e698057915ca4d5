// The parts of the machine as tables of a report.
#pragma once

#include <string>

#include "host/answer/complete_answer.h"
#include "host/text/texts.h"

namespace host {

// A table a kind, with the columns that anything is known for; empty where the platform tells no
// parts.
std::string PartTables(const CompleteAnswer& complete, const Texts& texts);

}  // namespace host
