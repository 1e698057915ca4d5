// What is there whole, or not at all. All but WriteAll throw Failure(kCannotWrite).
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace host {

// A folder with all its files.
class NewFolder {
 public:
  // Fails when `path` is there already and not an empty folder, or when
  // nothing can be written beside it.
  explicit NewFolder(const std::filesystem::path& path);
  // Unless finished, nothing stays.
  ~NewFolder();
  NewFolder(const NewFolder&) = delete;
  NewFolder& operator=(const NewFolder&) = delete;

  void Write(const std::string& file, const std::string& text);
  void Finish();

 private:
  const std::filesystem::path path_;
  const std::filesystem::path staging_;  // beside it
};

// To an open file.
std::error_code WriteAll(int file, std::string_view text);
// Fails when `file` is there already and does not begin with `mark`.
void ExpectReplaceable(const std::filesystem::path& file, std::string_view mark);
// By a file beside it that is renamed: readers see the old one or the new one, whole.
void ReplaceFile(const std::filesystem::path& file, std::string_view text);

}  // namespace host
