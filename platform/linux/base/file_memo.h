// What a file was parsed into, for as long as the file stays the same: one system call, where
// reading it takes four.
#pragma once

#include <sys/stat.h>

#include <cerrno>
#include <ctime>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "platform/linux/base/open.h"
#include "platform/linux/base/root.h"

namespace linux_platform {

// One object a file, static: tables that every request needs and that hardly ever change. Any
// thread may call.
template <typename Value>
class FileMemo {
 public:
  // `parse` gets what ReadSmallFile says, and errno with it. What could not be read is tried anew
  // the next time: the process may have been out of descriptors.
  template <typename Parse>
  std::shared_ptr<const Value> Of(const std::string& path, std::size_t cap, const Parse& parse) {
    Version version = {path};
    ReadResult read = Look(version);
    if (read != ReadResult::Failed) {
      const std::lock_guard lock(mutex_);
      if (value_ && version == version_) return value_;
    }
    std::string text;
    if (read == ReadResult::Read) read = ReadSmallFile(path.c_str(), cap, text);
    auto value = std::make_shared<const Value>(parse(read, std::move(text)));
    // The next change may fall into the same tick of the clock as the last.
    constexpr std::time_t kSettled = 2;
    if (read == ReadResult::Failed || version.changed.tv_sec + kSettled > std::time(nullptr))
      return value;
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

  // Read: it is there.
  static ReadResult Look(Version& version) {
    struct stat status = {};
    if (!Stat(version.path, status)) return ToReadResult(errno);
    version.inode = status.st_ino;
    version.size = status.st_size;
    version.changed = status.st_ctim;
    return ReadResult::Read;
  }

  std::mutex mutex_;
  Version version_;
  std::shared_ptr<const Value> value_;
};

}  // namespace linux_platform
