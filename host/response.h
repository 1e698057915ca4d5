// The server's half of VELA::APIResponse: what a handler's answer becomes.
#pragma once

#include <string>

#include "vela_api.h"

namespace vela::host {

class Response : public VELA::APIResponse {
 public:
  // The document as JSON on one line; empty until the handler answered.
  std::string& Text() { return text_; }

 private:
  friend class VELA::APIResponse;
  std::string text_;
};

// On one line, with the shortest decimals: 2.2 is "2.2", 40 as a real is "40.0".
std::string OneLine(const Json::Value& document);

}  // namespace vela::host
