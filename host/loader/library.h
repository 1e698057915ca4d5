// A shared library, opened for the life of the process.
#pragma once

#include <string>

namespace host {

class Library {
 public:
  // `flags` as for dlopen(3). Throws Failure(kUnavailable); `role` ("the platform") and
  // `advice` (what to do when the file is not there) go into its words.
  Library(std::string path, int flags, const std::string& role, const std::string& advice);

  // Null when the library does not have it.
  template <typename Function>
  Function FindFunction(const char* symbol) const {
    return reinterpret_cast<Function>(Symbol(symbol));
  }
  const std::string& Path() const { return path_; }

 private:
  void* Symbol(const char* name) const;

  std::string path_;
  void* handle_;
};

}  // namespace host
