#include "host/cli/new_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "host/text/failure.h"

namespace host {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void CannotWrite(const fs::path& path, const std::string& why,
                              const std::string& advice) {
  throw Failure(kCannotWrite, "Cannot write " + path.string() + ": " + why + ". " + advice);
}

[[noreturn]] void CannotWrite(const fs::path& path, const std::error_code& error) {
  CannotWrite(path, error.message(),
              "Name a folder in one that is there and that this user may write to.");
}

// Without the slash that a shell's completion leaves at the end.
fs::path Absolute(const fs::path& path) {
  std::error_code error;
  const fs::path absolute = fs::absolute(path, error).lexically_normal();
  if (error) CannotWrite(path, error);
  return absolute.has_filename() ? absolute : absolute.parent_path();
}

// Creates the file; nothing that is there already, a link neither, is written to.
std::error_code WriteNew(const fs::path& file, std::string_view text, Readers readers) {
  const int out = open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
  if (out < 0) return {errno, std::generic_category()};
  std::error_code error = WriteAll(out, text);
  if (readers == Readers::All && fchmod(out, 0644) != 0 && !error)
    error = {errno, std::generic_category()};
  if (close(out) != 0 && !error) error = {errno, std::generic_category()};
  return error;
}

fs::path Beside(const fs::path& path) {
  return path.parent_path() / ("." + path.filename().string() + ".new-" + std::to_string(getpid()));
}

}  // namespace

std::error_code WriteAll(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(file, text.data(), text.size());
    if (written < 0) return {errno, std::generic_category()};
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return {};
}

NewFolder::NewFolder(const fs::path& path) : path_(Absolute(path)), staging_(Beside(path_)) {
  std::error_code error;
  const bool there = fs::symlink_status(path_, error).type() != fs::file_type::not_found;
  const bool empty = fs::is_directory(path_, error) && fs::is_empty(path_, error);
  if (there && (!empty || error)) {
    CannotWrite(path_, "it is there already", "Name a new folder, or remove this one first.");
  }
  if (path_ == fs::current_path(error)) {
    CannotWrite(path_, "it is the current folder", "Name a new folder in it.");
  }
  error.clear();
  if (!fs::create_directory(staging_, error)) CannotWrite(path_, error);
  fs::remove(staging_, error);
}

NewFolder::~NewFolder() {
  if (!staged_) return;
  std::error_code gone;
  fs::remove_all(staging_, gone);
}

void NewFolder::Write(const std::string& file, const std::string& text) {
  errno = 0;
  std::ofstream out(staging_ / file, std::ios::binary);
  out << text;
  out.close();
  if (!out) CannotWrite(path_ / file, {errno, std::generic_category()});
}

void NewFolder::Make(const std::vector<std::pair<std::string, std::string>>& files) {
  std::error_code error;
  staged_ = fs::create_directory(staging_, error);
  if (!staged_) CannotWrite(path_, error);
  for (const auto& [file, text] : files) Write(file, text);
  fs::rename(staging_, path_, error);
  if (error) CannotWrite(path_, error);
}

void ExpectReplaceable(const fs::path& file, std::string_view mark, const std::string& kind) {
  std::error_code error;
  if (!fs::exists(fs::symlink_status(file, error))) return;
  std::string start(mark.size(), '\0');
  std::ifstream in(file, std::ios::binary);
  if (fs::is_regular_file(file, error) && in.read(start.data(), std::ssize(start)) && start == mark)
    return;
  CannotWrite(file, "it is there already, and is no " + kind, "Name a new file.");
}

void ReplaceFile(const fs::path& file, std::string_view text, Readers readers) {
  const std::string beside = file.string() + ".new-" + std::to_string(getpid());
  std::error_code error = WriteNew(beside, text, readers);
  const bool ours = error != std::errc::file_exists;
  if (!error) fs::rename(beside, file, error);
  if (!error) return;
  std::error_code gone;
  if (ours) fs::remove(beside, gone);
  CannotWrite(file, error.message(), "Name a file in a folder that this user may write to.");
}

}  // namespace host
