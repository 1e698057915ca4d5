#include "platform/recorder/recorder.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include "platform/recorder/recording.h"
#include "platform/simulator/scenario_writer.h"
#include "platform/simulator/simulator.h"
#include "platform/status/collected.h"
#include "platform/status/notes.h"
#include "platform/status/source_status.h"

namespace recorder {
namespace {

constexpr int kUnavailable = 69;          // as sysexits(3) has it
constexpr off_t kLargestFile = 16 << 20;  // beyond, the module does not read it
constexpr int kNotSimulated = -2;         // not a file of a simulated machine

void* platform = nullptr;
const VELAOperatingSystem* operatingSystem = nullptr;

// The file's bytes; none of what the module would not read either.
std::string ReadBytes(int file) {
  struct stat status = {};
  if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) return {};
  std::string bytes(static_cast<std::size_t>(std::min(status.st_size, kLargestFile + 1)), '\0');
  const ssize_t length = pread(file, bytes.data(), bytes.size(), 0);
  if (length < 0 || length > kLargestFile) return {};
  bytes.resize(static_cast<std::size_t>(length));
  return bytes;
}

int HostName(char* name, std::size_t size) {
  const int result = operatingSystem->gethostname(name, size);
  Recording().hostName =
      result == 0 ? std::optional(std::string(name, strnlen(name, size))) : std::nullopt;
  return result;
}

int SystemRecord(struct sysinfo* record) {
  const int result = operatingSystem->sysinfo(record);
  Recording().uptime = result == 0 ? std::optional<std::int64_t>(record->uptime) : std::nullopt;
  return result;
}

int OpenFile(const char* path) {
  int file = operatingSystem->open(path);
  if (std::strcmp(path, simulator::kSecurityScanFile) != 0) return file;
  constexpr int kToRead = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  // Not openat: the executable's would come back here.
  if (file == kNotSimulated)
    file = static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, kToRead, 0));
  Recording().securityScan = file >= 0 ? std::optional(ReadBytes(file)) : std::nullopt;
  return file;
}

bool IsUsual(const VELASourceReport& report) {
  using source_status::State;
  const bool oftenAbsent =
      std::strcmp(report.name, "SAN") == 0 || std::strcmp(report.name, "high availability") == 0;
  if (oftenAbsent) return report.state == State::Absent;
  return report.state == State::Read && report.reasonCount == 0;
}

simulator::StatedStatus StateStatus(const VELASourceReport& report) {
  simulator::StatedStatus status{source_status::NameState(report.state), "", "", {}};
  for (std::uint32_t i = 0; i < report.reasonCount; ++i)
    status.also.push_back({report.reasons[i].text, report.reasons[i].remedy});
  if (report.moreReasons != 0) status.also.push_back({"more", ""});
  if (status.also.empty()) return status;
  status.reason = status.also.front().reason;
  status.remedy = status.also.front().remedy;
  status.also.erase(status.also.begin());
  return status;
}

// A platform may not report on its sources.
void RecordSources(simulator::Machine& machine) {
  const auto copyReports =
      reinterpret_cast<decltype(&VELAPlatformSources)>(dlsym(platform, "VELAPlatformSources"));
  if (copyReports == nullptr) return;
  std::array<VELASourceReport, source_status::kSourceCount> reports = {};
  copyReports(reports.data(), static_cast<int>(reports.size()));
  for (const VELASourceReport& report : reports) {
    if (!IsUsual(report)) machine.sources[report.name] = StateStatus(report);
  }
}

// Nor may it have notes.
void RecordNotes(simulator::Machine& machine) {
  const auto copyNotes =
      reinterpret_cast<decltype(&VELAPlatformNotes)>(dlsym(platform, "VELAPlatformNotes"));
  if (copyNotes == nullptr) return;
  std::array<VELANote, kVELANotes> notes = {};
  const int count = copyNotes(notes.data(), kVELANotes);
  for (int i = 0; i < std::min(count, kVELANotes); ++i) {
    const VELANote& note = notes[static_cast<std::size_t>(i)];
    machine.notes.push_back({note.key, note.part, note.figure, note.mark, note.command});
  }
}

// Nor may it have a collector.
void RecordSnapshotTime(simulator::Machine& machine) {
  const auto tell = reinterpret_cast<decltype(&VELAPlatformSnapshotTime)>(
      dlsym(platform, "VELAPlatformSnapshotTime"));
  if (tell != nullptr) machine.snapshotTime = tell();
}

// What `name` hands over goes to the end of `list`.
template <typename Element>
void RecordAll(const char* name, std::vector<Element>& list) {
  using Take = void (*)(void* taker, const Element* element);
  const auto handOver = reinterpret_cast<void (*)(Take, void*)>(dlsym(platform, name));
  if (handOver == nullptr) return;
  handOver(
      [](void* taker, const Element* element) {
        static_cast<std::vector<Element>*>(taker)->push_back(*element);
      },
      &list);
}

}  // namespace

simulator::Machine& Recording() {
  static simulator::Machine machine;
  return machine;
}

void* FindSymbol(const char* name) {
  void* symbol = dlsym(platform, name);
  if (symbol != nullptr) return symbol;
  std::fprintf(stderr, "vela-health: the platform has no function %s\n", name);
  std::_Exit(kUnavailable);
}

}  // namespace recorder

using namespace recorder;

void VELARecorderStart(const char* path, const VELAOperatingSystem* answers) {
  platform = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
  if (answers != VELARecorderOperatingSystem()) operatingSystem = answers;  // started once more
  Recording() = simulator::Machine();
}

const VELAOperatingSystem* VELARecorderOperatingSystem() {
  static constexpr VELAOperatingSystem kSystem = {HostName, SystemRecord, OpenFile};
  return &kSystem;
}

const char* VELARecorderState(const char* why) {
  static std::string state;
  simulator::Machine machine = Recording();
  RecordSources(machine);
  RecordNotes(machine);
  RecordSnapshotTime(machine);
  RecordAll("VELAPlatformParts", machine.parts);
  RecordAll("VELAPlatformEvidence", machine.evidence);
  state = simulator::WriteScenario(machine, why);
  return state.c_str();
}
