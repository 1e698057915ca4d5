// What a file was parsed into, for as long as the file stays the same: one system call, where
// reading it takes four.
#pragma once

#include <sys/stat.h>

#include <ctime>
#include <memory>
#include <mutex>
#include <string>

#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"

namespace linux_platform {

// One object a file, static: tables that every request needs and that hardly ever change. Any
// thread may call.
template <typename Value>
class FileMemo {
 public:
  // `parse` gets "" of a file that is not there or cannot be read.
  std::shared_ptr<const Value> Of(const std::string& path, std::size_t cap,
                                  Value (*parse)(const std::string&)) {
    const Version version = Look(path);
    {
      const std::lock_guard lock(mutex_);
      if (value_ && version == version_) return value_;
    }
    std::string text;
    if (version.inode != 0) ReadSmallFile(path.c_str(), cap, text);
    const auto value = std::make_shared<const Value>(parse(text));
    // The next change may fall into the same tick of the clock as the last.
    constexpr std::time_t kSettled = 2;
    if (version.changed.tv_sec + kSettled > std::time(nullptr)) return value;
    const std::lock_guard lock(mutex_);
    version_ = version;
    return value_ = value;
  }

 private:
  struct Version {
    std::string path;
    ino_t inode = 0;  // 0: there is no such file
    off_t size = 0;
    timespec changed = {};
    bool operator==(const Version& other) const {
      return path == other.path && inode == other.inode && size == other.size &&
             changed.tv_sec == other.changed.tv_sec && changed.tv_nsec == other.changed.tv_nsec;
    }
  };

  static Version Look(const std::string& path) {
    struct stat status = {};
    if (!Stat(path, status)) return {path};
    return {path, status.st_ino, status.st_size, status.st_ctim};
  }

  std::mutex mutex_;
  Version version_;
  std::shared_ptr<const Value> value_;
};

}  // namespace linux_platform
