// The one door to paths that may lie below another root. That is a tree which somebody else may
// have made, and whoever looks into it may be root: no link leads out of it, nothing in it is
// waited for, none of its devices is opened, and what is written follows no link at all.
#pragma once

#include <dirent.h>
#include <sys/stat.h>

#include <memory>
#include <string>

#include "platform/linux/base/descriptor.h"

namespace linux_platform {

// All that follow take a path as it is and act as the system call that they are named after,
// unless the path lies below another root that is not trusted (root.h). Then links lead where
// they would lead if that root were "/". They need openat2, that is Linux 5.6; without it nothing
// below such a root is there.

// Never waits for the other end of a pipe, becomes no terminal, closes on exec. Below another
// root only regular files and folders are opened, unless with O_PATH: ENXIO.
Descriptor Open(const char* path, int flags);
inline Descriptor Open(const std::string& path, int flags) { return Open(path.c_str(), flags); }

bool Access(const std::string& path, int mode);
bool Stat(const std::string& path, struct stat& status);
// The link's text; empty when it cannot be read.
std::string ReadLink(const std::string& path);

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};
// Null when there is no such folder.
std::unique_ptr<DIR, CloseFolder> OpenFolder(const std::string& path);

// The folder to make, rename and remove files in, with openat(2) and its like. Below another
// root it is reached through no link. False in it: errno says why.
Descriptor OpenForChange(const std::string& folder);

}  // namespace linux_platform
