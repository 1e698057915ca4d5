// Status lines that libdevmapper has no parser for.
#pragma once

#include <string>

#include "platform/linux/collector/mapping_status.h"

namespace linux_platform {

// `parameters` as the kernel tells them of a target of that type.
MappingStatus JudgeMultipath(const std::string& parameters);
MappingStatus JudgeIntegrity(const std::string& parameters);
MappingStatus JudgeVdo(const std::string& parameters);
MappingStatus JudgeWriteCache(const std::string& parameters);

}  // namespace linux_platform
