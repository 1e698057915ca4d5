#include "host/loader/response.h"

#include "common/json_writer.h"

// Out of line, so that whoever makes a Response has SetSuccess linked in, which only a module
// calls.
std::string& host::Response::Text() { return text_; }

// The document is the handler's and gone after the call, so its text is made here.
void VELA::APIResponse::SetSuccess(const Json::Value& document) {
  static_cast<host::Response*>(this)->text_ = common::WriteCompact(document);
}
