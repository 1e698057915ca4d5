// Error state, network, configuration, hardware, web server, UPS and high availability.
#include <algorithm>
#include <cstring>
#include <map>

#include <vela_conf.h>
#include <vela_network.h>
#include <vela_webserver.h>
#include <velac.h>

#include "common/text.h"
#include "platform/recorder/recording.h"

using common::ViewText;
using recorder::FindFunction;
using recorder::Recording;

namespace {

// Types by interface: what a number stands for is the platform's.
std::map<int, std::string>& InterfacesByType() {
  static std::map<int, std::string> names;
  return names;
}

simulator::NetworkInterface* FindInterface(std::string_view name) {
  auto& interfaces = Recording().interfaces;
  const auto found = std::find_if(interfaces.begin(), interfaces.end(),
                                  [name](const auto& each) { return each.name == name; });
  return found != interfaces.end() ? &*found : nullptr;
}

std::optional<std::string> OrNone(const char* text) {
  return text != nullptr ? std::optional<std::string>(text) : std::nullopt;
}

using Settings = std::map<std::string, std::string, std::less<>>;

// What a setting that is not there is handed as its default.
constexpr const char* kAbsent = "\1absent";

// The platform's answer for one setting, which is recorded.
const char* RecordSetting(const char* symbol, const VelaConf* conf, const char* key,
                          Settings& settings, const char* defaultValue) {
  using Getter = const char*(const VelaConf*, const char*, const char*);
  const char* value = FindFunction<Getter>(symbol)(conf, key, kAbsent);
  const bool absent = value == nullptr || std::strcmp(value, kAbsent) == 0;
  if (absent) {
    settings.erase(key);
  } else {
    settings[key] = value;
  }
  return absent ? defaultValue : value;
}

// Whether a setting holds a value. It may compare otherwise than RecordSetting would tell: this
// answer is the one that counts.
bool RecordCheck(const char* symbol, const VelaConf* conf, const char* key, const char* value,
                 bool flag, Settings& settings) {
  using Getter = bool(const VelaConf*, const char*, const char*, bool);
  const bool holds = FindFunction<Getter>(symbol)(conf, key, value, flag);
  const auto seen = settings.find(key);
  if (holds) settings[key] = value;
  if (!holds && seen != settings.end() && seen->second == value) settings.erase(seen);
  return holds;
}

void RecordComponent(int component, int result, unsigned detail) {
  auto& recording = Recording();
  const bool failed = result == 1;
  if (component == 1) recording.fanFailed = failed;
  if (component == 6) recording.cpuFanFailed = failed;
  if (component == 4) {
    recording.powerFailed = failed;
    recording.powerDetail = failed ? detail : 0;
  }
  if (component == 5) {
    recording.unitFansFailed = failed;
    recording.unitFansDetail = failed ? detail : 0;
  }
  if (failed) recording.hardwareFails = false;  // what it tells counts, whatever it said before
}

}  // namespace

unsigned VLIBCErrGet() { return Recording().errorCode = FindFunction<unsigned()>(__func__)(); }
int VLIBCErrorGetLine() { return Recording().errorLine = FindFunction<int()>(__func__)(); }
const char* VLIBCErrorGetFile() {
  const char* file = FindFunction<const char*()>(__func__)();
  Recording().errorFile = OrNone(file);
  return file;
}

int VLIBNetGetInterfaceInfo(VLIB_NET_INTERFACE* entries, int count, int mask) {
  const int filled =
      FindFunction<decltype(VLIBNetGetInterfaceInfo)>(__func__)(entries, count, mask);
  Recording().interfacesFail = filled < 0;
  Recording().interfaces.clear();
  for (int i = 0; i < std::min(filled, count); ++i)
    Recording().interfaces.push_back({std::string(ViewText(entries[i].name)), ""});
  return filled;
}

int VELANetIFGetInfoEx(const char* name, int flags, VELA_NETIF_INFO* record) {
  const int result = FindFunction<decltype(VELANetIFGetInfoEx)>(__func__)(name, flags, record);
  if (auto* interface = FindInterface(name)) {
    interface->fails = result < 0;
    if (result >= 0) interface->address = ViewText(record->address);
  }
  return result;
}

namespace vela::network {

int GetIfType(const char* name, void* detail) {
  const int type =
      FindFunction<decltype(GetIfType)>("_ZN4vela7network9GetIfTypeEPKcPv")(name, detail);
  InterfacesByType()[type] = name;
  return type;
}

const char* GetTypeString(int type) {
  const char* text =
      FindFunction<decltype(GetTypeString)>("_ZN4vela7network13GetTypeStringEi")(type);
  if (auto* interface = FindInterface(InterfacesByType()[type])) interface->type = OrNone(text);
  return text;
}

}  // namespace vela::network

VelaConf::VelaConf() { FindFunction<void(VelaConf*)>("_ZN8VelaConfC1Ev")(this); }
VelaConf::~VelaConf() { FindFunction<void(VelaConf*)>("_ZN8VelaConfD1Ev")(this); }

const char* VelaConf::Info(const char* key, const char* defaultValue) const {
  return RecordSetting("_ZNK8VelaConf4InfoEPKcS1_", this, key, Recording().settings, defaultValue);
}

const char* VelaConf::Def(const char* key, const char* defaultValue) const {
  return RecordSetting("_ZNK8VelaConf3DefEPKcS1_", this, key, Recording().defaults, defaultValue);
}

bool VelaConf::InfoCheckValue(const char* key, const char* value, bool flag) const {
  Info(key, "");
  return RecordCheck("_ZNK8VelaConf14InfoCheckValueEPKcS1_b", this, key, value, flag,
                     Recording().settings);
}

bool VelaConf::DefCheckValue(const char* key, const char* value, bool flag) const {
  Def(key, "");
  return RecordCheck("_ZNK8VelaConf13DefCheckValueEPKcS1_b", this, key, value, flag,
                     Recording().defaults);
}

int VLIBCFileGetKeyValue(const char* path, const char* key, char* buffer, int size, int flags) {
  const int result =
      FindFunction<decltype(VLIBCFileGetKeyValue)>(__func__)(path, key, buffer, size, flags);
  if (result < 0) {
    Recording().defaults.erase(key);
  } else {
    Recording().defaults[key] =
        std::string(buffer, strnlen(buffer, static_cast<std::size_t>(size)));
  }
  return result;
}

int VELASysStatusGet(VELA_SYS_STATUS* record) {
  const int result = FindFunction<decltype(VELASysStatusGet)>(__func__)(record);
  Recording().hardwareFails = result < 0;
  return result;
}

int VELAIsComponentFail(const VELA_SYS_STATUS* record, int component, unsigned* detail) {
  const int result =
      FindFunction<decltype(VELAIsComponentFail)>(__func__)(record, component, detail);
  RecordComponent(component, result, *detail);
  return result;
}

int VELARedundantPowerSupport() {
  const int result = FindFunction<int()>(__func__)();
  Recording().redundantPower = result != 0;
  return result;
}

int VELAHWSysTempWarning(int* state) {
  const int result = FindFunction<decltype(VELAHWSysTempWarning)>(__func__)(state);
  Recording().temperatureResult = result;
  Recording().temperatureState = *state;
  return result;
}

int VELAServiceIsHttpDefaultConf() {
  return Recording().httpDefaultConf = FindFunction<int()>(__func__)();
}

namespace velaw3 {

NginxConfManager::NginxConfManager(NGINXCONF_OPERATOR operation) {
  FindFunction<void(NginxConfManager*, NGINXCONF_OPERATOR)>(
      "_ZN6velaw316NginxConfManagerC1ENS_18NGINXCONF_OPERATORE")(this, operation);
}

NginxConfManager::~NginxConfManager() {
  FindFunction<void(NginxConfManager*)>("_ZN6velaw316NginxConfManagerD1Ev")(this);
}

bool NginxConfManager::run() {
  return Recording().webServerApplies =
             FindFunction<bool(NginxConfManager*)>("_ZN6velaw316NginxConfManager3runEv")(this);
}

}  // namespace velaw3

int VELAUPSInfoGet(VELA_UPS_INFO* record) {
  const int result = FindFunction<decltype(VELAUPSInfoGet)>(__func__)(record);
  auto& recording = Recording();
  recording.upsFails = result != 0;
  if (result != 0) return result;
  recording.upsEnabled = record->enabled;
  recording.upsState = record->state;
  recording.upsConnected = record->connected;
  return result;
}

int VELAHAIsRunning() {
  const int running = FindFunction<int()>(__func__)();
  Recording().haRunning = running != 0;
  return running;
}

int VELAHAGetOverviewStatusDL(char* buffer, int size) {
  const int result = FindFunction<decltype(VELAHAGetOverviewStatusDL)>(__func__)(buffer, size);
  Recording().haStatus = std::string(buffer, strnlen(buffer, static_cast<std::size_t>(size)));
  if (result < 0 && Recording().haStatus->empty()) Recording().haStatus.reset();
  return result;
}
