#include "host/cli/new_folder.h"

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
  const fs::path absolute = fs::absolute(path).lexically_normal();
  return absolute.has_filename() ? absolute : absolute.parent_path();
}

fs::path Beside(const fs::path& path) {
  return path.parent_path() / ("." + path.filename().string() + ".new-" + std::to_string(getpid()));
}

}  // namespace

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
}

NewFolder::~NewFolder() {
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

void NewFolder::Finish() {
  std::error_code error;
  fs::rename(staging_, path_, error);
  if (error) CannotWrite(path_, error);
}

}  // namespace host
