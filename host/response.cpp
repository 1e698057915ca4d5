#include "host/response.h"

#include <json/writer.h>

#include <memory>
#include <sstream>
#include <utility>

namespace vela::host {
namespace {

std::unique_ptr<Json::StreamWriter> OneLineWriter() {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["precision"] = 15;
  return std::unique_ptr<Json::StreamWriter>(builder.newStreamWriter());
}

}  // namespace

// Making a writer costs more than writing with it; one may not be shared by threads.
std::string OneLine(const Json::Value& document) {
  thread_local const std::unique_ptr<Json::StreamWriter> writer = OneLineWriter();
  std::ostringstream out;
  writer->write(document, &out);
  return std::move(out).str();
}

}  // namespace vela::host

// The document is the handler's and gone after the call, so its text is made here.
void VELA::APIResponse::SetSuccess(const Json::Value& document) {
  static_cast<vela::host::Response*>(this)->text_ = vela::host::OneLine(document);
}
