// The module's entry: the method table that the server reads, and the "get" method.
#include <vela_api.h>

#include "SystemChecker/system_checker_handler.h"
#include "SystemInfo/system_info_handler.h"
#include "module/health_document.h"

namespace VELA::SystemHealth {
namespace {

// The snapshot opens the request on the platform, and closes it when it goes: after the answer
// was sent.
void Get(APIRequest*, APIResponse* response) {
  const SystemInfoHandler info;
  const CheckerRule rule = SystemCheckerHandler().Check(info);
  const Json::Value document = HealthDocument(rule);
  response->SetSuccess(document);
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
