// One request, as a server makes it; what the server does with the answer is its own cost.
#pragma once

#include <vela_api.h>

extern "C" const VELA::APIMethodRow* GetAPITable();

inline void Get() {
  VELA::APIResponse response;
  GetAPITable()[0].handler(nullptr, &response);
}
