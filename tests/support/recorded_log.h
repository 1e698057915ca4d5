// What this thread wrote to the system log: "<priority> <line>", 3 an error, 7 debug.
#pragma once

#include <string>
#include <vector>

namespace VELA::SystemHealth {

std::vector<std::string>& RecordedLog();

}  // namespace VELA::SystemHealth
