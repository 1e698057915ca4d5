#include "tests/support/random_machine.h"

#include <random>

#include <json/reader.h>
#include <json/writer.h>

namespace simulator {
namespace {

constexpr std::uint64_t kMiB = 1U << 20U;

Volume NewVolume(const Machine& machine) {
  const std::string digit = std::to_string(machine.volumes.size() + 1);
  return {.path = "/volume" + digit,
          .spaceId = "volume_" + digit,
          .used = 500 * kMiB,
          .total = 1000 * kMiB,
          .inodes = 1000,
          .freeInodes = 900};
}

void AddVolume(Machine& machine, std::uint64_t used, std::uint64_t freeInodes) {
  machine.volumes.push_back(NewVolume(machine));
  machine.volumes.back().used = used;
  machine.volumes.back().freeInodes = freeInodes;
}

void AddDisk(Machine& machine, const char* status, bool disconnected) {
  Json::Value disk = MakeDisk("Disk", status, "volume_1");
  if (disconnected) disk["remote_info"]["disconnect"] = 1;
  machine.disks.Append(disk);
}

void AddUnit(Machine& machine, unsigned power) {
  const auto slot = static_cast<std::int32_t>(machine.units.size());
  machine.units.push_back({.name = "RX", .slot = slot, .power = {{1, power}}});
}

void FailPower(Machine& machine, unsigned detail) {
  machine.powerFailed = true;
  machine.powerDetail |= detail;
}

Json::Value San(const Machine& machine) {
  Json::Value san;
  san["luns"] = san["volumes"] = Json::Value(Json::arrayValue);
  if (machine.sanOutput) Json::Reader().parse(*machine.sanOutput, san);
  return san;
}

void SetSan(Machine& machine, const Json::Value& san) {
  machine.sanOutput = Json::writeString(Json::StreamWriterBuilder(), san);
}

// Fractions as well as whole numbers: tools write sizes both ways.
void AddLun(Machine& machine, const char* status, double freeSize) {
  Json::Value san = San(machine);
  Json::Value lun;
  lun["name"] = "LUN";
  lun["status"] = status;
  lun["location"] = "/volume" + std::to_string(san["volumes"].size() + 1);
  Json::Value volume;
  volume["path"] = lun["location"];
  volume["free_size"] = freeSize;
  volume["total_size"] = 1e11;
  san["luns"].append(lun);
  san["volumes"].append(volume);
  SetSan(machine, san);
}

constexpr Fault kFaults[] = {
    {"fan", [](Machine& m) { m.fanFailed = true; }},
    {"cpu fan", [](Machine& m) { m.cpuFanFailed = true; }},
    {"power", [](Machine& m) { FailPower(m, 0); }},
    {"supply 1", [](Machine& m) { FailPower(m, 0x100); }},
    {"supply 2", [](Machine& m) { FailPower(m, 0x200); }},
    {"temperature", [](Machine& m) { m.temperatureState = 1; }},
    {"system volume", [](Machine& m) { m.systemVolumeCrashed = true; }},
    {"web server", [](Machine& m) { m.httpDefaultConf = 1, m.webServerApplies = false; }},
    {"security scan", [](Machine& m) { m.securityScan = R"({"sysStatus": "danger"})"; }},
    {"on battery", [](Machine& m) { m.upsState = std::max(m.upsState, 2); }},
    {"battery low", [](Machine& m) { m.upsState = 3; }},
    {"storage abnormal",
     [](Machine& m) { m.overview = m.overview == "danger" ? "danger" : "abnormal"; }},
    {"storage danger", [](Machine& m) { m.overview = "danger"; }},
    {"disk crashed", [](Machine& m) { AddDisk(m, "system_crashed", false); }},
    {"disk disconnected", [](Machine& m) { AddDisk(m, "normal", true); }},
    {"volume full", [](Machine& m) { AddVolume(m, 999 * kMiB, 900); }},
    {"inodes used up", [](Machine& m) { AddVolume(m, 0, 10); }},
    {"usb volume full",
     [](Machine& m) {
       m.usb.push_back({"usbshare7", 100, 1});
     }},
    {"card full",
     [](Machine& m) {
       m.usb.push_back({"sdshare1", 100, 1});
     }},
    {"esata volume full",
     [](Machine& m) {
       m.esata.push_back({"satashare1", 100, 1});
     }},
    {"unit supply", [](Machine& m) { AddUnit(m, 1); }},
    {"unit fan",
     [](Machine& m) { AddUnit(m, 3), m.unitFansFailed = true, m.unitFansDetail = 0xFFFFFF00; }},
    {"cluster", [](Machine& m) { m.haRunning = true, m.haStatus = "danger"; }},
    {"lun crashed", [](Machine& m) { AddLun(m, "Unhealthy", 9e10); }},
    {"lun at hard limit", [](Machine& m) { AddLun(m, "degraded", 134217727.5); }},
    {"lun at soft limit", [](Machine& m) { AddLun(m, "degraded", 1.34217728e8); }},
    {"lun short of space", [](Machine& m) { AddLun(m, "degraded", 5000000000.0); }},
    {"low capacity write",
     [](Machine& m) {
       Json::Value san = San(m);
       san["low_capacity_write_on"] = true;
       SetSan(m, san);
     }},
};

class Dice {
 public:
  explicit Dice(unsigned seed) : random_(seed) {}

  // From 0 to `most`.
  unsigned operator()(unsigned most) { return static_cast<unsigned>(random_()) % (most + 1); }

 private:
  std::mt19937 random_;
};

}  // namespace

std::span<const Fault> Faults() { return kFaults; }

RandomMachine::RandomMachine(unsigned seed) : state("seed " + std::to_string(seed)) {
  Dice dice(seed);
  const auto roll = [this, &dice](const std::string& name, unsigned most) {
    const unsigned value = dice(most);
    state += ", " + name + " " + std::to_string(value);
    return value;
  };
  constexpr const char* kThresholds[] = {"", "0", "0.3", "0,3", "abc", "5e-1"};
  machine.hostName = "host" + std::to_string(seed);
  machine.uptime = seed;
  machine.volumes.resize(roll("volumes", 4));
  for (unsigned left = roll("units", 2); left > 0; --left) AddUnit(machine, 3);
  for (unsigned left = roll("well luns", 2); left > 0; --left) AddLun(machine, "normal", 0);
  if (roll("no bays", 2) == 1) machine.defaults["maxdisks"] = "0", machine.maxDisks = 0;
  if (roll("no temperature", 3) == 1) machine.defaults.erase("supportsystempwarning");
  machine.redundantPower = roll("redundant power", 1) == 1;
  machine.upsConnected = roll("ups", 2) != 0;
  machine.httpDefaultConf = static_cast<int>(roll("web server", 2)) - 1;
  for (const char* key : {"usb_partition_warning_percent", "sdcard_partition_warning_percent",
                          "esata_partition_warning_percent", "disk_inode_warning_percent"})
    machine.settings[key] = kThresholds[roll(key, std::size(kThresholds) - 1)];

  const unsigned health = 1 + dice(30);
  for (const Fault& fault : kFaults) {
    if (dice(health) != 0) continue;
    fault.apply(machine);
    state += std::string(", ") + fault.name;
  }
}

}  // namespace simulator
