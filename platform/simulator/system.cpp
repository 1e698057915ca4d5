// Error state, network, configuration, files, hardware, UPS and high availability.
#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

#include <vela_conf.h>
#include <vela_network.h>
#include <vela_webserver.h>
#include <velac.h>

#include "platform/simulator/call.h"

using simulator::Call;
using simulator::Machine;
using simulator::Simulated;
using source_status::Source;

namespace {

using Settings = std::map<std::string, std::string, std::less<>>;

const char* FindSetting(const Settings& settings, const char* key, const char* defaultValue) {
  const auto found = settings.find(std::string_view(key));
  return found != settings.end() ? found->second.c_str() : defaultValue;
}

bool HoldsValue(const Settings& settings, const char* key, const char* value) {
  const auto found = settings.find(std::string_view(key));
  return found != settings.end() && found->second == value;
}

// A machine answers only calls whose fixed arguments are as the interface states them.
constexpr int kInterfacesWithAddresses = 18;
constexpr const char* kDefaultsFile = "/etc.defaults/velainfo.conf";

// Marks a record that VELASysStatusGet has filled.
constexpr unsigned char kFilled = 0x5A;

struct Component {
  bool failed;
  unsigned detail;
};

Component GetComponent(const Machine& machine, int component) {
  switch (component) {
    case 1:
      return {machine.fanFailed, 0};
    case 4:
      return {machine.powerFailed, machine.powerDetail};
    case 5:
      return {machine.unitFansFailed, machine.unitFansDetail};
    case 6:
      return {machine.cpuFanFailed, 0};
    default:
      return {false, 0};
  }
}

}  // namespace

unsigned VLIBCErrGet() { return Simulated().errorCode; }
const char* VLIBCErrorGetFile() { return simulator::OrNull(Simulated().errorFile); }
int VLIBCErrorGetLine() { return Simulated().errorLine; }

int VLIBNetGetInterfaceInfo(VLIB_NET_INTERFACE* entries, int count, int mask) {
  Call call(Source::Network, __func__);
  if (call->interfacesFail || mask != kInterfacesWithAddresses) {
    call.Fail("listing the network interfaces failed");
    return -1;
  }
  // Says how many there are, even where they do not all have room: a caller must not trust it.
  const auto all = static_cast<int>(call->interfaces.size());
  for (int i = 0; i < std::min(count, all); ++i)
    simulator::CopyToField(call->interfaces[static_cast<std::size_t>(i)].name, entries[i].name);
  return all;
}

int VELANetIFGetInfoEx(const char* name, int flags, VELA_NETIF_INFO* record) {
  Call call(Source::Network, __func__);
  for (const auto& interface : call->interfaces) {
    if (interface.name != name) continue;
    if (interface.fails || flags != 0) break;
    simulator::CopyToField(interface.address, record->address);
    return 0;
  }
  call.Fail("reading an interface failed");
  return -1;
}

namespace vela::network {

// A type's number is its interface's place in the list.
int GetIfType(const char* name, void*) {
  Call call(Source::Network, __func__);
  const auto& interfaces = call->interfaces;
  const auto found = std::find_if(interfaces.begin(), interfaces.end(),
                                  [name](const auto& each) { return each.name == name; });
  return static_cast<int>(found - interfaces.begin());
}

const char* GetTypeString(int type) {
  Call call(Source::Network, __func__);
  const auto index = static_cast<std::size_t>(type);
  return index < call->interfaces.size() ? simulator::OrNull(call->interfaces[index].type)
                                         : "other";
}

}  // namespace vela::network

VelaConf::VelaConf() : sources_(&Simulated()) { ++Simulated().ledger.objects; }
VelaConf::~VelaConf() { --static_cast<Machine*>(sources_)->ledger.objects; }

const char* VelaConf::Info(const char* key, const char* defaultValue) const {
  Call call(Source::Configuration, "VelaConf::Info");
  return call->settingsNull ? nullptr : FindSetting(call->settings, key, defaultValue);
}

const char* VelaConf::Def(const char* key, const char* defaultValue) const {
  Call call(Source::Configuration, "VelaConf::Def");
  return call->settingsNull ? nullptr : FindSetting(call->defaults, key, defaultValue);
}

bool VelaConf::InfoCheckValue(const char* key, const char* value, bool) const {
  Call call(Source::Configuration, "VelaConf::InfoCheckValue");
  return HoldsValue(call->settings, key, value);
}

bool VelaConf::DefCheckValue(const char* key, const char* value, bool) const {
  Call call(Source::Configuration, "VelaConf::DefCheckValue");
  return HoldsValue(call->defaults, key, value);
}

int VLIBCFileGetKeyValue(const char* path, const char* key, char* buffer, int size, int flags) {
  Call call(Source::Configuration, __func__);
  if (call->keyValueFails || flags != 0 || std::strcmp(path, kDefaultsFile) != 0) {
    call.Fail("reading the factory defaults failed");
    return -1;
  }
  const char* value = FindSetting(call->defaults, key, nullptr);
  if (value == nullptr || std::strlen(value) >= static_cast<std::size_t>(size)) return -1;
  std::strcpy(buffer, value);
  return 0;
}

int VELASysStatusGet(VELA_SYS_STATUS* record) {
  Call call(Source::Hardware, __func__);
  if (call->delay > 0) std::this_thread::sleep_for(std::chrono::milliseconds(call->delay));
  if (call->hardwareFails) {
    call.Fail("reading the hardware status failed");
    return -1;
  }
  record->opaque[0] = kFilled;
  return 0;
}

int VELAIsComponentFail(const VELA_SYS_STATUS* record, int component, unsigned* detail) {
  Call call(Source::Hardware, __func__);
  if (record->opaque[0] != kFilled) return -1;
  const Component state = GetComponent(*call, component);
  *detail = state.detail;
  return state.failed ? 1 : 0;
}

int VELARedundantPowerSupport() { return Call(Source::Hardware, __func__)->redundantPower ? 1 : 0; }

int VELAHWSysTempWarning(int* state) {
  Call call(Source::Hardware, __func__);
  if (call->temperatureResult != 0) call.Fail("reading the temperature failed");
  *state = call->temperatureState;
  return call->temperatureResult;
}

int VELAServiceIsHttpDefaultConf() {
  Call call(Source::WebServer, __func__);
  if (call->httpDefaultConf < 0) call.Fail("asking for the web service failed");
  return call->httpDefaultConf;
}

namespace velaw3 {

NginxConfManager::NginxConfManager(NGINXCONF_OPERATOR) : state_(&Simulated()) {
  ++Simulated().ledger.objects;
}

NginxConfManager::~NginxConfManager() { --static_cast<Machine*>(state_)->ledger.objects; }

bool NginxConfManager::run() {
  return Call(Source::WebServer, "NginxConfManager::run")->webServerApplies;
}

}  // namespace velaw3

int VELAUPSInfoGet(VELA_UPS_INFO* record) {
  Call call(Source::Ups, __func__);
  if (call->upsFails) {
    call.Fail("asking for the UPS failed");
    return -1;
  }
  record->enabled = call->upsEnabled;
  record->state = call->upsState;
  record->connected = call->upsConnected;
  return 0;
}

int VELAHAIsRunning() {
  Call call(Source::HighAvailability, __func__);
  if (!call->haRunning) call.Absent("no cluster runs");
  return call->haRunning ? 1 : 0;
}

int VELAHAGetOverviewStatusDL(char* buffer, int size) {
  Call call(Source::HighAvailability, __func__);
  if (!call->haStatus) {
    call.Fail("asking for the cluster's status failed");
    return -1;
  }
  const std::size_t length = call->haStatus->copy(buffer, static_cast<std::size_t>(size));
  if (length < static_cast<std::size_t>(size)) buffer[length] = '\0';
  return 0;
}
