// A machine of arbitrary fields: any size, any name, any state that the platform could report.
#include <cstring>

#include <fuzzer/FuzzedDataProvider.h>

#include "fuzz/one_request.h"

namespace {

using simulator::Machine;

std::string Text(FuzzedDataProvider& data) { return data.ConsumeRandomLengthString(40); }

simulator::Volume AnyVolume(FuzzedDataProvider& data) {
  return {.path = Text(data),
          .spaceId = data.ConsumeBool() ? Text(data) : "volume_" + Text(data),
          .type = data.ConsumeIntegralInRange(0, 2),
          .status = data.ConsumeBool() ? "normal" : Text(data),
          .used = data.ConsumeIntegral<std::uint64_t>(),
          .total = data.ConsumeIntegral<std::uint64_t>(),
          .inodes = data.ConsumeIntegral<std::uint64_t>(),
          .freeInodes = data.ConsumeIntegral<std::uint64_t>(),
          .warningShare = data.ConsumeFloatingPoint<float>(),
          .fails = data.ConsumeBool()};
}

simulator::ExternalVolume AnyExternalVolume(FuzzedDataProvider& data) {
  constexpr const char* kShares[] = {"", "usbshare", "sdshare", "satashare"};
  return {.name = data.PickValueInArray(kShares) + Text(data),
          .total = data.ConsumeIntegral<std::uint64_t>(),
          .free = data.ConsumeIntegral<std::uint64_t>(),
          .cardReader = data.ConsumeBool()};
}

simulator::ExpansionUnit AnyUnit(FuzzedDataProvider& data) {
  return {.name = Text(data),
          .naming = data.ConsumeBool(),
          .slot = data.ConsumeIntegral<std::int32_t>(),
          .number = data.ConsumeIntegral<std::uint32_t>(),
          .power = {{data.ConsumeIntegral<std::uint8_t>(), data.ConsumeIntegral<unsigned>()}}};
}

Json::Value AnyDisk(FuzzedDataProvider& data) {
  Json::Value disk = simulator::MakeDisk(Text(data), Text(data), Text(data));
  if (data.ConsumeBool()) disk["remote_info"]["disconnect"] = data.ConsumeIntegral<Json::Int64>();
  if (data.ConsumeBool()) disk["remote_info"] = Text(data);
  return data.ConsumeBool() ? disk : Json::Value(Text(data));
}

void FillLists(FuzzedDataProvider& data, Machine& machine) {
  machine.usb.clear();
  machine.volumes.clear();
  const auto count = [&data] { return data.ConsumeIntegralInRange(0, 4); };
  for (int left = count(); left > 0; --left) machine.volumes.push_back(AnyVolume(data));
  for (int left = count(); left > 0; --left) machine.usb.push_back(AnyExternalVolume(data));
  for (int left = count(); left > 0; --left) machine.esata.push_back(AnyExternalVolume(data));
  for (int left = count(); left > 0; --left) machine.units.push_back(AnyUnit(data));
  for (int left = count(); left > 0; --left) machine.disks.Append(AnyDisk(data));
  for (int left = count(); left > 0; --left)
    machine.interfaces.push_back({Text(data), Text(data), Text(data), data.ConsumeBool()});
}

void FillFields(FuzzedDataProvider& data, Machine& machine) {
  for (bool* flag : {&machine.fanFailed, &machine.cpuFanFailed, &machine.powerFailed,
                     &machine.unitFansFailed, &machine.redundantPower, &machine.systemVolumeCrashed,
                     &machine.webServerApplies, &machine.haRunning, &machine.hardwareFails,
                     &machine.upsFails, &machine.disksFail, &machine.unitsFail})
    *flag = data.ConsumeBool();
  machine.powerDetail = data.ConsumeIntegral<unsigned>();
  machine.unitFansDetail = data.ConsumeIntegral<unsigned>();
  machine.upsState = data.ConsumeIntegralInRange(-1, 4);
  machine.httpDefaultConf = data.ConsumeIntegralInRange(-1, 1);
  machine.temperatureState = data.ConsumeIntegralInRange(0, 2);
  machine.uptime = data.ConsumeIntegral<long>();
  machine.overview = Text(data);
  machine.haStatus = Text(data);
  machine.hostName = Text(data);
  machine.settings["disk_inode_warning_percent"] = Text(data);
  machine.settings["usb_partition_warning_percent"] = Text(data);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  Machine machine;
  FillFields(data, machine);
  FillLists(data, machine);
  const fuzz::Answer answer = fuzz::OneRequest(machine);
  fuzz::Require(fuzz::OneRequest(machine) == answer, "the same answer twice");
  return 0;
}
