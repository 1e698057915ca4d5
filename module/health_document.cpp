#include "module/health_document.h"

#include <cerrno>
#include <string>
#include <system_error>

#include <sys/sysinfo.h>
#include <unistd.h>

#include <vela_network.h>
#include <velac.h>

#include "common/text.h"
#include "module/base/log.h"

namespace VELA::SystemHealth {
namespace {

using Key = Json::StaticString;

// The module logs by the name of its API.
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
    Json::Value& interface = list.append(Json::objectValue);
    interface[Key("id")] = name;
    interface[Key("ip")] = std::string(common::ViewText(details.address));
    interface[Key("type")] =
        vela::network::GetTypeString(vela::network::GetIfType(name.c_str(), nullptr));
  }
  return list;
}

}  // namespace

Json::Value HealthDocument(const CheckerRule& rule) {
  Json::Value document(Json::objectValue);
  document[Key("rule")] = rule.ToJson();
  document[Key("hostname")] = HostName();
  document[Key("uptime")] = Uptime();
  document[Key("interfaces")] = Interfaces();
  return document;
}

}  // namespace VELA::SystemHealth
