// A machine in memory: everything that the platform interface can be asked, as plain
// fields. A default-constructed one is a healthy eight-bay appliance.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <json/value.h>

#include "platform/simulator/borrowed_json.h"
#include "platform/simulator/memory_file.h"
#include "platform/status/evidence.h"
#include "platform/status/parts.h"
#include "platform/status/source_status.h"

namespace simulator {

struct NetworkInterface {
  std::string name;
  std::string address;
  std::optional<std::string> type = "lan";  // none: the platform hands out null
  bool fails = false;                       // its details cannot be read
  bool operator==(const NetworkInterface&) const = default;
};

struct Volume {
  std::string path;
  std::string spaceId;
  std::int32_t type = 1;  // any other is no volume
  std::string status = "normal";
  std::uint64_t used = 0, total = 0;  // bytes
  std::uint64_t inodes = 0, freeInodes = 0;
  float warningShare = 0.05F;
  bool fails = false;  // its file system cannot be read
  bool operator==(const Volume&) const = default;
};

struct ExternalVolume {
  std::string name;                     // of at most 36 bytes; 36 leave no room for a NUL
  std::uint64_t total = 0, free = 0;    // bytes
  std::optional<bool> cardReader = {};  // by default what the name says: "sdshare..."
  bool operator==(const ExternalVolume&) const = default;
};

struct PowerReport {
  int result = 1;  // 0 and 255: unknown
  unsigned word = 3;
  bool operator==(const PowerReport&) const = default;
};

struct ExpansionUnit {
  std::optional<std::string> name;  // none: the unit cannot tell its name
  bool naming = true;               // false: the record lacks the naming function
  std::int32_t slot = 0;
  std::uint32_t number = 1;
  std::optional<PowerReport> power = PowerReport();  // none: the record lacks the function
  bool operator==(const ExpansionUnit&) const = default;
};

struct StatedReason {
  std::string reason, remedy;
  bool operator==(const StatedReason&) const = default;
};

// What a source reports of itself, whatever its calls answer.
struct StatedStatus {
  std::string state = "failed";  // as source_status::NameState has it
  std::string reason, remedy;
  std::vector<StatedReason> also;  // further reasons
  bool operator==(const StatedStatus&) const = default;
};
using Sources = std::map<std::string, StatedStatus, std::less<>>;

// A note beside the answer, with the fields of VELANote.
struct StatedNote {
  std::string key, part;
  std::int64_t figure = 0, mark = 0;
  std::string command;
  bool operator==(const StatedNote&) const = default;
};

// None for a word that names no state.
std::optional<source_status::State> FindState(std::string_view name);
// Says it of the source of the running request.
void ReportStatus(source_status::Source source, const StatedStatus& stated);

// The disks as the storage manager dumps them: an array that points to its texts, so that
// an answer copies none of them.
class DiskList {
 public:
  DiskList() = default;
  DiskList(const DiskList& other) { *this = other; }
  DiskList& operator=(const DiskList& other);

  void Clear();
  void Append(const Json::Value& disk);  // any JSON value: a scenario may be odd
  std::size_t Size() const { return disks_.size(); }

  // An array; valid while this list neither changes nor goes.
  const Json::Value& View() const { return disks_; }
  bool operator==(const DiskList& other) const { return disks_ == other.disks_; }

 private:
  Texts texts_;
  Json::Value disks_{Json::arrayValue};
};

// What is out with callers, and what they asked. Copies of a machine start from zero.
struct Ledger {
  Ledger() = default;
  Ledger(const Ledger&) {}
  Ledger& operator=(const Ledger&) { return *this; }

  std::atomic<int> lists = 0;               // handed out and not given back, null ones included
  std::atomic<int> streams = 0;             // likewise
  std::atomic<int> objects = 0;             // constructed and not destroyed
  std::function<void(const char*)> onCall;  // when set, hears each call's name; may throw
};

// The bytes of the security scan's result, which come through open(2).
constexpr const char* kSecurityScanFile = "/var/lib/securityscan/systemResult.json";

// "sdshare1" is a card's share.
bool IsNamedLikeACard(std::string_view volume);

struct Machine {
  Machine();

  // --- Operating system; none: cannot be read.
  std::optional<std::string> hostName = "vela";
  std::optional<std::int64_t> uptime = 93784;  // seconds
  MemoryFile securityScan;                     // the result file

  // --- Error state after a failed call.
  unsigned errorCode = 0x0100;
  std::optional<std::string> errorFile = "simulator.cpp";  // none: null
  int errorLine = 1;

  // --- Network.
  std::vector<NetworkInterface> interfaces;
  bool interfacesFail = false;

  // --- Configuration.
  std::map<std::string, std::string, std::less<>> settings;
  std::map<std::string, std::string, std::less<>> defaults;
  bool keyValueFails = false;  // the defaults file cannot be read directly
  bool settingsNull = false;   // each text that is asked for is null

  // --- Hardware.
  int delay = 0;               // milliseconds until it tells its status
  bool hardwareFails = false;  // no status record: no component is known
  bool fanFailed = false;
  bool cpuFanFailed = false;
  bool powerFailed = false;
  unsigned powerDetail = 0;  // from bit 8 up, the failed supplies
  bool unitFansFailed = false;
  unsigned unitFansDetail = 0;  // from bit 8 up, the slots of units with a failed fan
  bool redundantPower = true;
  int temperatureResult = 0;  // 0: read
  int temperatureState = 0;   // 1: warning

  // --- System volume and web server.
  bool systemVolumeCrashed = false;
  int httpDefaultConf = 0;  // negative: error; positive: runs on its defaults
  bool webServerApplies = true;

  // --- UPS.
  bool upsFails = false;
  std::int32_t upsEnabled = 1;
  std::int32_t upsState = 1;
  std::uint8_t upsConnected = 1;

  // --- Storage.
  std::vector<Volume> volumes;
  int maxDisks = 8;
  DiskList disks;
  bool disksFail = false;
  std::string overview = "normal";

  // --- External volumes.
  std::vector<ExternalVolume> usb;  // card readers included
  std::vector<ExternalVolume> esata;

  // --- Expansion units.
  std::vector<ExpansionUnit> units;
  bool unitsFail = false;

  // --- High availability.
  bool haRunning = false;
  std::optional<std::string> haStatus = "normal";  // none: nothing is written

  // --- SAN.
  std::optional<std::string> sanOutput;  // the tool's bytes; none: no tool
  bool sanFails = false;                 // the tool is there and cannot be started

  // --- The status of the sources; by default what the calls that were answered amount to.
  Sources sources;

  // --- Beside the answer.
  std::int64_t snapshotTime = -1;  // of a collector, in seconds since 1970; -1: it never looked
  std::vector<StatedNote> notes;
  std::vector<VELAPart> parts;
  std::vector<VELAEvidence> evidence;

  Ledger ledger;
};

// One disk as the storage manager dumps it.
Json::Value MakeDisk(const std::string& name, const std::string& status, const std::string& usedBy);

// The machine that answers this thread: the one it entered, or one for the process.
Machine& Simulated();
void Enter(Machine* machine);  // null: back to the process's

}  // namespace simulator
