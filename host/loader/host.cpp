#include "host/loader/host.h"

#include <utility>

#include "common/json_writer.h"
#include "host/loader/module_log.h"
#include "host/text/failure.h"

namespace host {

using VELA::APIMethodRow;

// The server's half of VELA::APIResponse: what a handler's answer becomes.
class Response : public VELA::APIResponse {
 public:
  std::string text;  // the document as JSON on one line; empty until the handler answered
};

Host::Host(const HostFiles& files)
    : platform_(files.platform,
                files.recorder.empty() ? Platform::Scope::All : Platform::Scope::Private) {
  if (!files.recorder.empty()) recorder_.emplace(files.recorder, platform_);
  for (const std::string& path : files.modules) modules_.emplace_back(path);
}

const APIMethodRow* Host::FindMethod(std::string_view api, std::int64_t version,
                                     std::string_view method) const {
  for (const Module& module : modules_) {
    if (const APIMethodRow* row = module.FindMethod(api, version, method)) return row;
  }
  return nullptr;
}

std::string Host::CallForDocument(const APIMethodRow& method,
                                  const SimulatedMachine& machine) const {
  platform_.StartRequest(machine);
  Response response;
  method.handler(nullptr, &response);  // no method of ours reads its request
  if (response.text.empty()) {
    throw Failure(kInternal, std::string("The module gave no answer to ") + method.api + " " +
                                 method.method + ".");
  }
  return std::move(response.text);
}

Reply Host::CallMethod(const APIMethodRow& method, const SimulatedMachine& machine) const {
  Reply reply;
  const ModuleLog log;
  reply.document = CallForDocument(method, machine);
  platform_.ReadSources(reply.sources);
  AddLoggedFailures(log.Lines(), reply.sources);
  return reply;
}

const APIMethodRow& FindHealthMethod(const Host& host) {
  const APIMethodRow* row = host.FindMethod(kHealthAPI, kHealthVersion, kHealthMethod);
  if (row != nullptr) return *row;
  throw Failure(kUnavailable, std::string("The loaded module has no API ") + kHealthAPI +
                                  ", version 1, method get. Name the health module with --module.");
}

}  // namespace host

// The document is the handler's and gone after the call, so its text is made here.
void VELA::APIResponse::SetSuccess(const Json::Value& document) {
  static_cast<host::Response*>(this)->text = common::WriteCompact(document);
}
