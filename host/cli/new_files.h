// What is there whole, or not at all. All but WriteAll throw Failure(kCannotWrite).
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace host {

// A folder with all its files.
class NewFolder {
 public:
  // Fails when `path` is there already and not an empty folder, or when nothing can be written
  // beside it. Leaves nothing there: whoever is stopped meanwhile leaves nothing, either.
  explicit NewFolder(const std::filesystem::path& path);
  ~NewFolder();
  NewFolder(const NewFolder&) = delete;
  NewFolder& operator=(const NewFolder&) = delete;

  // Makes it, with files of these names and texts.
  void Make(const std::vector<std::pair<std::string, std::string>>& files);

 private:
  void Write(const std::string& file, const std::string& text);

  const std::filesystem::path path_;
  const std::filesystem::path staging_;  // beside it
  bool staged_ = false;
};

// To an open file.
std::error_code WriteAll(int file, std::string_view text);
// Fails when `file` is there already and does not begin with `mark`, so that it is none of `kind`:
// "report".
void ExpectReplaceable(const std::filesystem::path& file, std::string_view mark,
                       const std::string& kind);
// Who may read a new file: as the process's umask has it, or everybody.
enum class Readers { Usual, All };
// By a file beside it that is renamed: readers see the old one or the new one, whole.
void ReplaceFile(const std::filesystem::path& file, std::string_view text,
                 Readers readers = Readers::Usual);

}  // namespace host
