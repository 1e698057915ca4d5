// A folder that is there with all its files, or not at all.
#pragma once

#include <filesystem>
#include <string>

namespace host {

class NewFolder {
 public:
  // Throws Failure(kCannotWrite) when `path` is there already and not an empty folder, or when
  // nothing can be written beside it.
  explicit NewFolder(const std::filesystem::path& path);
  // Unless finished, nothing stays.
  ~NewFolder();
  NewFolder(const NewFolder&) = delete;
  NewFolder& operator=(const NewFolder&) = delete;

  // Both throw Failure(kCannotWrite).
  void Write(const std::string& file, const std::string& text);
  void Finish();

 private:
  const std::filesystem::path path_;
  const std::filesystem::path staging_;  // beside it
};

}  // namespace host
