// A plug-in module: a table of API methods.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/loader/library.h"
#include "vela_api.h"

namespace host {

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
