// Error state, network, configuration, hardware, web server, UPS and high availability.
#include <algorithm>
#include <cstring>
#include <map>

#include <vela_conf.h>
#include <vela_network.h>
#include <vela_webserver.h>
#include <velac.h>

#include "platform/recorder/below.h"

using recorder::Below;
using recorder::Seen;

namespace {

// Types by interface: what a number stands for is the platform's.
std::map<int, std::string>& InterfacesByType() {
  static std::map<int, std::string> names;
  return names;
}

simulator::NetworkInterface* Find(std::string_view name) {
  auto& interfaces = Seen().interfaces;
  const auto found = std::find_if(interfaces.begin(), interfaces.end(),
                                  [name](const auto& each) { return each.name == name; });
  return found != interfaces.end() ? &*found : nullptr;
}

using Settings = std::map<std::string, std::string, std::less<>>;

// What a setting that is not there is handed as its default.
constexpr const char* kAbsent = "\1absent";

// Hands on a question for one setting, and keeps the answer.
const char* Ask(const char* symbol, const VelaConf* conf, const char* key, Settings& settings,
                const char* defaultValue) {
  using Question = const char*(const VelaConf*, const char*, const char*);
  const char* value = Below<Question>(symbol)(conf, key, kAbsent);
  const bool absent = std::strcmp(value, kAbsent) == 0;
  if (absent) {
    settings.erase(key);
  } else {
    settings[key] = value;
  }
  return absent ? defaultValue : value;
}

// Whether a setting holds a value. It may compare otherwise than Ask would tell: this answer
// is the one that counts.
bool Check(const char* symbol, const VelaConf* conf, const char* key, const char* value, bool flag,
           Settings& settings) {
  using Question = bool(const VelaConf*, const char*, const char*, bool);
  const bool holds = Below<Question>(symbol)(conf, key, value, flag);
  const auto seen = settings.find(key);
  if (holds) settings[key] = value;
  if (!holds && seen != settings.end() && seen->second == value) settings.erase(seen);
  return holds;
}

void KeepComponent(int component, int result, unsigned detail) {
  auto& seen = Seen();
  const bool failed = result == 1;
  if (component == 1) seen.fanFailed = failed;
  if (component == 6) seen.cpuFanFailed = failed;
  if (component == 4) seen.powerFailed = failed, seen.powerDetail = failed ? detail : 0;
  if (component == 5) seen.unitFansFailed = failed, seen.unitFansDetail = failed ? detail : 0;
  if (failed) seen.hardwareFails = false;  // what it tells counts, whatever it said before
}

}  // namespace

unsigned VLIBCErrGet() { return Seen().errorCode = Below<unsigned()>(__func__)(); }
int VLIBCErrorGetLine() { return Seen().errorLine = Below<int()>(__func__)(); }
const char* VLIBCErrorGetFile() {
  const char* file = Below<const char*()>(__func__)();
  Seen().errorFile = file;
  return file;
}

int VLIBNetGetInterfaceInfo(VLIB_NET_INTERFACE* entries, int count, int mask) {
  const int filled = Below<decltype(VLIBNetGetInterfaceInfo)>(__func__)(entries, count, mask);
  Seen().interfacesFail = filled < 0;
  Seen().interfaces.clear();
  for (int i = 0; i < std::min(filled, count); ++i)
    Seen().interfaces.push_back({{entries[i].name, strnlen(entries[i].name, 132)}, ""});
  return filled;
}

int VELANetIFGetInfoEx(const char* name, int flags, VELA_NETIF_INFO* record) {
  const int result = Below<decltype(VELANetIFGetInfoEx)>(__func__)(name, flags, record);
  if (auto* interface = Find(name)) {
    interface->fails = result < 0;
    if (result >= 0) interface->address = {record->address, strnlen(record->address, 42)};
  }
  return result;
}

namespace vela::network {

int GetIfType(const char* name, void* detail) {
  const int type = Below<decltype(GetIfType)>("_ZN4vela7network9GetIfTypeEPKcPv")(name, detail);
  InterfacesByType()[type] = name;
  return type;
}

const char* GetTypeString(int type) {
  const char* text = Below<decltype(GetTypeString)>("_ZN4vela7network13GetTypeStringEi")(type);
  if (auto* interface = Find(InterfacesByType()[type])) interface->type = text;
  return text;
}

}  // namespace vela::network

VelaConf::VelaConf() { Below<void(VelaConf*)>("_ZN8VelaConfC1Ev")(this); }
VelaConf::~VelaConf() { Below<void(VelaConf*)>("_ZN8VelaConfD1Ev")(this); }

const char* VelaConf::Info(const char* key, const char* defaultValue) const {
  return Ask("_ZNK8VelaConf4InfoEPKcS1_", this, key, Seen().settings, defaultValue);
}

const char* VelaConf::Def(const char* key, const char* defaultValue) const {
  return Ask("_ZNK8VelaConf3DefEPKcS1_", this, key, Seen().defaults, defaultValue);
}

bool VelaConf::InfoCheckValue(const char* key, const char* value, bool flag) const {
  Info(key, "");
  return Check("_ZNK8VelaConf14InfoCheckValueEPKcS1_b", this, key, value, flag, Seen().settings);
}

bool VelaConf::DefCheckValue(const char* key, const char* value, bool flag) const {
  Def(key, "");
  return Check("_ZNK8VelaConf13DefCheckValueEPKcS1_b", this, key, value, flag, Seen().defaults);
}

int VLIBCFileGetKeyValue(const char* path, const char* key, char* buffer, int size, int flags) {
  const int result =
      Below<decltype(VLIBCFileGetKeyValue)>(__func__)(path, key, buffer, size, flags);
  if (result < 0) {
    Seen().defaults.erase(key);
  } else {
    Seen().defaults[key] = std::string(buffer, strnlen(buffer, static_cast<std::size_t>(size)));
  }
  return result;
}

int VELASysStatusGet(VELA_SYS_STATUS* record) {
  const int result = Below<decltype(VELASysStatusGet)>(__func__)(record);
  Seen().hardwareFails = result < 0;
  return result;
}

int VELAIsComponentFail(const VELA_SYS_STATUS* record, int component, unsigned* detail) {
  const int result = Below<decltype(VELAIsComponentFail)>(__func__)(record, component, detail);
  KeepComponent(component, result, *detail);
  return result;
}

int VELARedundantPowerSupport() {
  const int result = Below<int()>(__func__)();
  Seen().redundantPower = result != 0;
  return result;
}

int VELAHWSysTempWarning(int* state) {
  const int result = Below<decltype(VELAHWSysTempWarning)>(__func__)(state);
  Seen().temperatureResult = result;
  Seen().temperatureState = *state;
  return result;
}

int VELAServiceIsHttpDefaultConf() { return Seen().httpDefaultConf = Below<int()>(__func__)(); }

namespace velaw3 {

NginxConfManager::NginxConfManager(NGINXCONF_OPERATOR operation) {
  Below<void(NginxConfManager*, NGINXCONF_OPERATOR)>(
      "_ZN6velaw316NginxConfManagerC1ENS_18NGINXCONF_OPERATORE")(this, operation);
}

NginxConfManager::~NginxConfManager() {
  Below<void(NginxConfManager*)>("_ZN6velaw316NginxConfManagerD1Ev")(this);
}

bool NginxConfManager::run() {
  return Seen().webServerApplies =
             Below<bool(NginxConfManager*)>("_ZN6velaw316NginxConfManager3runEv")(this);
}

}  // namespace velaw3

int VELAUPSInfoGet(VELA_UPS_INFO* record) {
  const int result = Below<decltype(VELAUPSInfoGet)>(__func__)(record);
  auto& seen = Seen();
  seen.upsFails = result != 0;
  if (result != 0) return result;
  seen.upsEnabled = record->enabled;
  seen.upsState = record->state;
  seen.upsConnected = record->connected;
  return result;
}

int VELAHAIsRunning() {
  const int running = Below<int()>(__func__)();
  Seen().haRunning = running != 0;
  return running;
}

int VELAHAGetOverviewStatusDL(char* buffer, int size) {
  const int result = Below<decltype(VELAHAGetOverviewStatusDL)>(__func__)(buffer, size);
  Seen().haStatus = std::string(buffer, strnlen(buffer, static_cast<std::size_t>(size)));
  if (result < 0 && Seen().haStatus->empty()) Seen().haStatus.reset();
  return result;
}
