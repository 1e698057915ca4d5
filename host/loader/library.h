// Shared libraries, opened for the life of the process; plug-in modules among them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "vela_api.h"

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

// A module is a library with a table of API methods.
class Module {
 public:
  // The platform must be open already. Throws Failure.
  explicit Module(const std::string& path);

  // Rows up to the row of zeros.
  const VELA::APIMethodRow* begin() const { return begin_; }
  const VELA::APIMethodRow* end() const { return end_; }
  // Null when the module has no such method.
  const VELA::APIMethodRow* FindMethod(std::string_view api, std::int64_t version,
                                       std::string_view method) const;

 private:
  Library library_;
  const VELA::APIMethodRow* begin_;
  const VELA::APIMethodRow* end_;
};

}  // namespace host
