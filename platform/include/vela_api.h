// What the web-API server and its plug-in modules share.
#pragma once

#include <cstddef>
#include <cstdint>

#include <json/value.h>

#pragma GCC visibility push(default)

namespace VELA {

class APIRequest;

// Its layout is the server's; modules only ever hold a pointer to one.
class APIResponse {
 public:
  void SetSuccess(const Json::Value& document);
};

// One row of a module's method table; a row of zeros ends the table.
struct APIMethodRow {
  const char* api;
  std::int64_t version;
  const char* method;
  void (*handler)(APIRequest* request, APIResponse* response);
};
static_assert(sizeof(APIMethodRow) == 32);
static_assert(offsetof(APIMethodRow, version) == 8);
static_assert(offsetof(APIMethodRow, method) == 16);
static_assert(offsetof(APIMethodRow, handler) == 24);

}  // namespace VELA

#pragma GCC visibility pop
