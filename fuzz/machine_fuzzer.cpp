// A machine of arbitrary fields: any size, any name, any state that the platform could report.
#include <concepts>

#include <fuzzer/FuzzedDataProvider.h>

#include "fuzz/one_request.h"

namespace {

// Becomes whatever a field holds.
struct Any {
  FuzzedDataProvider& data;
  operator bool() const { return data.ConsumeBool(); }
  operator float() const { return data.ConsumeFloatingPoint<float>(); }
  operator std::string() const { return data.ConsumeRandomLengthString(40); }
  template <std::integral Number>
  operator Number() const {
    return data.ConsumeIntegral<Number>();
  }
};

std::string AnyName(const Any& any) {
  constexpr const char* kBegin[] = {"", "normal", "volume_", "usbshare", "sdshare", "satashare"};
  return any.data.PickValueInArray(kBegin) + std::string(any);
}

void AddParts(const Any& any, simulator::Machine& m) {
  Json::Value disk = simulator::MakeDisk(any, any, any);
  if (any) disk["remote_info"]["disconnect"] = any.data.ConsumeIntegral<Json::Int64>();
  if (any) disk["remote_info"] = std::string(any);
  m.disks.Append(disk);
  m.volumes.push_back({any, AnyName(any), any.data.ConsumeIntegralInRange(0, 2), AnyName(any), any,
                       any, any, any, any, any});
  m.usb.push_back({AnyName(any), any, any, any.data.ConsumeBool()});
  m.esata.push_back({AnyName(any), any, any});
  m.units.push_back({std::string(any), any, any, any, simulator::PowerReport{any, any}});
  m.interfaces.push_back({any, any, std::string(any), any});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  const Any any{data};
  simulator::Machine m;
  for (bool* flag : {&m.fanFailed, &m.cpuFanFailed, &m.powerFailed, &m.unitFansFailed,
                     &m.redundantPower, &m.systemVolumeCrashed, &m.webServerApplies, &m.haRunning,
                     &m.hardwareFails, &m.upsFails, &m.disksFail, &m.unitsFail})
    *flag = any;
  for (unsigned* detail : {&m.powerDetail, &m.unitFansDetail}) *detail = any;
  for (int* state : {&m.upsState, &m.httpDefaultConf, &m.temperatureState})
    *state = data.ConsumeIntegralInRange(-1, 4);
  m.uptime = data.ConsumeIntegral<long>();
  m.haStatus = m.overview = AnyName(any);
  m.hostName = AnyName(any);
  for (const char* kind : {"disk_inode", "usb_partition"})
    m.settings[std::string(kind) + "_warning_percent"] = std::string(any);
  if (any) m.usb.clear(), m.volumes.clear();
  for (int left = data.ConsumeIntegralInRange(0, 4); left > 0; --left) AddParts(any, m);
  const fuzz::Answer answer = fuzz::OneRequest(m);
  fuzz::Require(fuzz::OneRequest(m) == answer, "the same answer twice");
  return 0;
}
