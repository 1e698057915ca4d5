// The one program that the module runs: the SAN tool.
#pragma once

#include <string>

namespace linux_platform {

constexpr const char* kSanTool = "/usr/local/bin/velaiscsiep";

// False while the tool is left alone, because it hung or flooded, while it does so again when
// it is tried, and when the request has no time left for it. `reason` says so.
bool MayRunSanTool(std::string& reason);

}  // namespace linux_platform
