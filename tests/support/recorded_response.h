// The server's side of a response: keeps the document.
#pragma once

#include <json/value.h>
#include <vela_api.h>

namespace VELA {

// Its members stand behind the pointer that the module is given.
struct RecordedResponse {
  Json::Value document;
  int answers = 0;
  void (*whileSending)() = nullptr;  // called before the document is kept

  APIResponse* AsResponse() { return reinterpret_cast<APIResponse*>(this); }
};

}  // namespace VELA
