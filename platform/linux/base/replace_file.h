// For the programs that leave results for others; a request writes nothing.
#pragma once

#include <string>

namespace linux_platform {

// Replaces the file at `path` by `text`, readable for all: readers see the old one or the
// new one, never a part. Its folder must be there. False: errno says why.
bool ReplaceFile(const std::string& path, const std::string& text);

// Makes the folder, but not those above it, readable for all, where it is missing. False
// when it cannot be written to; errno says why.
bool MakeFolder(const std::string& path);

}  // namespace linux_platform
