// The module's entry: the method table that the server reads, and the "get" method.
#include <cerrno>
#include <new>
#include <string>
#include <system_error>

#include <sys/sysinfo.h>
#include <unistd.h>

#include <json/value.h>
#include <vela_api.h>
#include <vela_network.h>
#include <velac.h>

#include "SystemChecker/system_checker_handler.h"
#include "SystemInfo/system_info_handler.h"
#include "common/text.h"
#include "module/base/log.h"

namespace VELA::SystemHealth {
namespace {

using Key = Json::StaticString;

constexpr const char* kSource = "module/VELA.Core.System.SystemHealth";
constexpr int kMostInterfaces = 32;
constexpr int kInterfaceMask = 18;  // the platform's selection of interfaces with addresses

// What %m would print, which ISO C++ does not know.
std::string LastError() { return std::generic_category().message(errno); }

std::string HostName() {
  char name[256] = {};
  if (gethostname(name, sizeof name) != 0) {
    LogError({kSource, __LINE__}, "Failed to get hostname, error: [%s]", LastError().c_str());
    return "";
  }
  return std::string(common::ViewText(name));
}

// Hours, minutes and seconds since boot; hours are not folded into days.
std::string Uptime() {
  struct sysinfo record = {};
  if (sysinfo(&record) != 0) {
    LogError({kSource, __LINE__}, "Failed to get sysinfo: [%s].", LastError().c_str());
    return "";
  }
  const auto seconds = record.uptime;
  const auto hours = static_cast<int>(seconds / 3600);
  return std::to_string(hours) + ":" + std::to_string(seconds % 3600 / 60) + ":" +
         std::to_string(seconds % 3600 % 60);
}

Json::Value Interfaces() {
  Json::Value list(Json::arrayValue);
  VLIB_NET_INTERFACE entries[kMostInterfaces];
  const int count = VLIBNetGetInterfaceInfo(entries, kMostInterfaces, kInterfaceMask);
  if (count < 0) {
    LogError({kSource, __LINE__}, "Failed to get network interfaces[0x%04X %s:%d]", VLIBCErrGet(),
             VLIBCErrorGetFile(), VLIBCErrorGetLine());
    return list;
  }
  for (int i = 0; i < count && i < kMostInterfaces; ++i) {
    const std::string name(common::ViewText(entries[i].name));
    VELA_NETIF_INFO details = {};
    if (VELANetIFGetInfoEx(name.c_str(), 0, &details) < 0) {
      LogError({kSource, __LINE__}, "Failed to get interface: [%s] information.[0x%04X %s:%d]",
               name.c_str(), VLIBCErrGet(), VLIBCErrorGetFile(), VLIBCErrorGetLine());
      continue;
    }
    Json::Value interface(Json::objectValue);
    interface[Key("id")] = name;
    interface[Key("ip")] = std::string(common::ViewText(details.address));
    interface[Key("type")] =
        vela::network::GetTypeString(vela::network::GetIfType(name.c_str(), nullptr));
    list.append(std::move(interface));
  }
  return list;
}

Json::Value Answer() {
  const SystemInfoHandler info;
  const CheckerRule rule = SystemCheckerHandler().Check(info);

  Json::Value answer(Json::objectValue);
  answer[Key("rule")] = rule.ToJson();
  answer[Key("hostname")] = HostName();
  answer[Key("uptime")] = Uptime();
  answer[Key("interfaces")] = Interfaces();
  return answer;
}

void Get(APIRequest*, APIResponse* response) {
  try {
    response->SetSuccess(Answer());
  } catch (const Json::Exception&) {
    // The JSON library's own word for a failed malloc. No document gets this far: what
    // comes from outside is looked at before it is touched.
    throw std::bad_alloc();
  }
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
