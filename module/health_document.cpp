#include "module/health_document.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

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

struct Interface {
  std::string id;
  std::string ip;
  std::string type;
};

std::vector<Interface> ListInterfaces() {
  std::vector<Interface> list;
  VLIB_NET_INTERFACE entries[kMostInterfaces];
  const int count = VLIBNetGetInterfaceInfo(entries, kMostInterfaces, kInterfaceMask);
  if (count < 0) {
    LogError({kSource, __LINE__}, "Failed to get network interfaces[0x%04X %s:%d]", VLIBCErrGet(),
             common::OrEmpty(VLIBCErrorGetFile()), VLIBCErrorGetLine());
    return list;
  }
  const int filled = std::min(count, kMostInterfaces);
  list.reserve(static_cast<std::size_t>(filled));
  for (int i = 0; i < filled; ++i) {
    std::string name(common::ViewText(entries[i].name));
    VELA_NETIF_INFO details = {};
    if (VELANetIFGetInfoEx(name.c_str(), 0, &details) < 0) {
      LogError({kSource, __LINE__}, "Failed to get interface: [%s] information.[0x%04X %s:%d]",
               name.c_str(), VLIBCErrGet(), common::OrEmpty(VLIBCErrorGetFile()),
               VLIBCErrorGetLine());
      continue;
    }
    const int type = vela::network::GetIfType(name.c_str(), nullptr);
    list.push_back({std::move(name), std::string(common::ViewText(details.address)),
                    common::OrEmpty(vela::network::GetTypeString(type))});
  }
  return list;
}

Json::Value ToJson(const std::vector<Interface>& interfaces) {
  Json::Value list(Json::arrayValue);
  for (const Interface& interface : interfaces) {
    Json::Value& json = list.append(Json::objectValue);
    json[Key("id")] = interface.id;
    json[Key("ip")] = interface.ip;
    json[Key("type")] = interface.type;
  }
  return list;
}

}  // namespace

Json::Value HealthDocument(const CheckerRule& rule) {
  const std::string hostName = HostName();
  const std::string uptime = Uptime();
  const std::vector<Interface> interfaces = ListInterfaces();
  try {
    Json::Value document(Json::objectValue);
    document[Key("rule")] = rule.ToJson();
    document[Key("hostname")] = hostName;
    document[Key("uptime")] = uptime;
    document[Key("interfaces")] = ToJson(interfaces);
    return document;
  } catch (const Json::Exception&) {
    // The library's own word for a failed malloc. All that the platform is asked stands outside:
    // what that throws is not ours to translate.
    throw std::bad_alloc();
  }
}

}  // namespace VELA::SystemHealth
