#include "host/loader/library.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "host/text/failure.h"

namespace host {

using VELA::APIMethodRow;

namespace {

// glibc's own words: "FILE: undefined symbol: NAME" (", version V" may follow).
std::string UndefinedSymbol(const std::string& error) {
  constexpr std::string_view kMark = "undefined symbol: ";
  const std::size_t mark = error.find(kMark);
  if (mark == std::string::npos) return {};
  const std::size_t start = mark + kMark.size();
  return error.substr(start, error.find_first_of(", \t", start) - start);
}

std::string WithoutPath(const std::string& error, const std::string& path) {
  return error.rfind(path + ": ", 0) == 0 ? error.substr(path.size() + 2) : error;
}

std::string WhyNot(const std::string& path, const std::string& error, const std::string& role,
                   const std::string& advice) {
  const std::string what = "Cannot load " + role + " " + path + ": ";
  if (access(path.c_str(), F_OK) != 0) return what + "there is no such file. " + advice;
  if (access(path.c_str(), R_OK) != 0) {
    return what + "this user may not read it. Ask for read permission, or run as its owner.";
  }
  if (const std::string symbol = UndefinedSymbol(error); !symbol.empty()) {
    return what + "the function " + symbol +
           ", which it needs, is in none of the loaded libraries. The files come from different "
           "versions, or the platform is no platform: build or install them together.";
  }
  return what + "it is not a shared library that this machine can load (" +
         WithoutPath(error, path) + "). " + advice;
}

}  // namespace

Library::Library(std::string path, int flags, const std::string& role, const std::string& advice)
    : path_(std::move(path)), handle_(dlopen(path_.c_str(), flags)) {
  if (handle_ != nullptr) return;
  const char* error = dlerror();
  throw Failure(kUnavailable, WhyNot(path_, error != nullptr ? error : "", role, advice));
}

void* Library::Symbol(const char* name) const { return dlsym(handle_, name); }

Module::Module(const std::string& path)
    : library_(path, RTLD_NOW, "the module", "Build it, or name another with --module.") {
  const auto table = library_.FindFunction<const APIMethodRow* (*)()>("GetAPITable");
  if (table == nullptr) {
    throw Failure(kUnavailable, "Cannot use " + path +
                                    " as a module: it is a library, but has no function "
                                    "GetAPITable. Name a module with --module.");
  }
  begin_ = end_ = table();
  while (end_ != nullptr && end_->api != nullptr) ++end_;
}

const APIMethodRow* Module::FindMethod(std::string_view api, std::int64_t version,
                                       std::string_view method) const {
  const auto* row = std::find_if(begin_, end_, [&](const APIMethodRow& candidate) {
    return candidate.version == version && candidate.api == api && candidate.method == method;
  });
  return row == end_ ? nullptr : row;
}

}  // namespace host
