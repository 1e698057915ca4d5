// The module's entry: the method table that the server reads, and the "get" method.
#include <new>

#include <vela_api.h>

#include "SystemChecker/system_checker_handler.h"
#include "SystemInfo/system_info_handler.h"
#include "module/health_document.h"

namespace VELA::SystemHealth {
namespace {

// One request. The snapshot opens it on the platform, and closes it when it goes.
struct Answer {
  const SystemInfoHandler info;
  const CheckerRule rule = SystemCheckerHandler().Check(info);
  const Json::Value document = HealthDocument(rule);
};

Answer MakeAnswer() {
  try {
    return Answer();
  } catch (const Json::Exception&) {
    // The JSON library's own word for a failed malloc. No document gets this far: what
    // comes from outside is looked at before it is touched.
    throw std::bad_alloc();
  }
}

// The request stays open until the answer was sent. What sending throws is the server's.
void Get(APIRequest*, APIResponse* response) {
  const Answer answer = MakeAnswer();
  response->SetSuccess(answer.document);
}

}  // namespace
}  // namespace VELA::SystemHealth

extern "C" {

#pragma GCC visibility push(default)

// Constant data: the loader makes it read-only before the server sees it.
extern const VELA::APIMethodRow gTable[2];
constinit const VELA::APIMethodRow gTable[2] = {
    {"VELA.Core.System.SystemHealth", 1, "get", VELA::SystemHealth::Get}, {}};

const VELA::APIMethodRow* GetAPITable() { return gTable; }

#pragma GCC visibility pop
}
