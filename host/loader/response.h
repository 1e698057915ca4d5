// The server's half of VELA::APIResponse: what a handler's answer becomes.
#pragma once

#include <string>

#include "common/json_writer.h"
#include "vela_api.h"

namespace host {

class Response : public VELA::APIResponse {
 public:
  // The document as JSON on one line; empty until the handler answered.
  std::string& Text();

 private:
  friend class VELA::APIResponse;
  std::string text_;
};

}  // namespace host
