// A throw-away root that the platform reads /etc, /run and the like from.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/linux/base/root.h"

class TemporaryRoot {
 public:
  TemporaryRoot() {
    std::string name =
        std::filesystem::temp_directory_path() / ("vela-root-" + std::string(6, 'X'));
    path_ = mkdtemp(name.data());
    linux_platform::SetRoot(path_.string(), true);
  }
  ~TemporaryRoot() {
    linux_platform::SetRoot("", false);
    std::filesystem::remove_all(path_);
  }
  TemporaryRoot(const TemporaryRoot&) = delete;
  TemporaryRoot& operator=(const TemporaryRoot&) = delete;

  // `path` begins with '/'. Parent folders are created.
  std::filesystem::path Write(const std::string& path, const std::string& text) const {
    const std::filesystem::path file = path_.string() + path;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
    return file;
  }
  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};
