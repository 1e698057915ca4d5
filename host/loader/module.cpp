#include "host/loader/module.h"

#include <dlfcn.h>

#include <algorithm>

#include "host/text/failure.h"

namespace host {

using VELA::APIMethodRow;

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
