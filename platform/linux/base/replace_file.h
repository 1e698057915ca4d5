// For the programs that leave results for others; a request writes nothing.
#pragma once

#include <sys/types.h>

#include <string>

#include "platform/linux/base/descriptor.h"

namespace linux_platform {

// Below another root no link is followed on the way to any of these (open.h).

// Replaces the file at `path` by `text`, readable for all: readers see the old one or the
// new one, never a part. What was there, a link or another name of some other file, stays as it
// was. Its folder must be there. False: errno says why.
bool ReplaceFile(const std::string& path, const std::string& text);
// True, too, when there is none.
bool RemoveFile(const std::string& path);

// Makes the folder, but not those above it, where it is missing. False when it cannot be
// written to; errno says why.
bool MakeFolder(const std::string& path, mode_t mode);

// The file, made where it is missing, to lock. False in it when it is no file of this user's
// alone: a link, a pipe, another name of some other file.
Descriptor OpenLock(const std::string& path);

}  // namespace linux_platform
