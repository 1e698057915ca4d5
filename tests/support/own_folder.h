// Where a test may write: two runs at once meet nowhere.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <string>

namespace test_support {

// Of this process alone, ends in '/', gone with it.
inline const std::string& OwnFolder() {
  static const struct Folder {
    Folder() {
      path = std::filesystem::temp_directory_path() / ("vela-test-" + std::string(6, 'X'));
      if (mkdtemp(path.data()) == nullptr) throw std::filesystem::filesystem_error(path, {});
      path += '/';
    }
    ~Folder() {
      std::error_code ignored;
      std::filesystem::remove_all(path, ignored);
    }
    std::string path;
  } folder;
  return folder.path;
}

}  // namespace test_support
