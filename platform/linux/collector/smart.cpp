// What smartd knows of the drives, out of its own files. No drive is asked, so none is woken. The
// matching of serial numbers takes more reading than a request should do.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <map>

#include "platform/linux/base/open.h"
#include "platform/linux/base/sysfs.h"
#include "platform/linux/collector/parts.h"
#include "platform/linux/collector/smartd_files.h"
#include "platform/linux/smart/drive_identity.h"
#include "platform/linux/smart/smart_snapshot.h"
#include "platform/linux/storage/block.h"
#include "platform/linux/storage/filesystem.h"

namespace linux_platform {
namespace {

constexpr std::size_t kStatCap = std::size_t{1} << 20;

// The time of a process's start, in ticks since the boot: the 22nd word of its "stat", the 20th
// after the name, which may hold blanks.
std::int64_t ReadStartTicks(const std::string& process) {
  std::string text;
  ReadSmallFile(Within(process, "stat").c_str(), kStatCap, text);
  std::size_t at = text.rfind(')');
  for (int word = 0; word < 20 && at != text.npos; ++word) at = text.find(' ', at + 1);
  if (at == text.npos) return -1;
  return ToNumber(text.substr(at + 1, text.find(' ', at + 1) - at - 1)).value_or(-1);
}

// The latest that smartd wrote of each serial number.
using KnownDrives = std::map<std::string_view, const DriveRecord*>;

// One that a state file names is the drive behind each device of that serial number: of all paths
// and namespaces. Each is taken from `hidden`.
void AddDevice(const std::string& device, const KnownDrives& known, SmartSnapshot& snapshot,
               KnownDrives& hidden) {
  const std::string path = LinkTarget(Sys("/class/block/", device));
  const std::string serial = ToFileName(ReadSerialNumber(device, path));
  const auto found = known.find(serial);
  if (found == known.end()) {
    if (ReadDriveKind(device, path) == DriveKind::Without) snapshot.without.push_back(device);
    return;
  }
  hidden.erase(serial);
  DriveRecord& drive = snapshot.drives.emplace_back(*found->second);
  drive.device = device;
  drive.rotating = Attribute(Within(path, "queue/rotational")) == "1";
}

// When systemd started it, by the clock of that moment: 0 when it did not. A clock that was set
// forward since makes what smartd wrote before look older than smartd.
std::time_t ReadTimeOfUnit() {
  const Descriptor link =
      Open(BelowRoot("/run/systemd/units/invocation:smartmontools.service"), O_PATH | O_NOFOLLOW);
  struct stat status = {};
  return link && fstat(link.Get(), &status) == 0 ? status.st_mtime : 0;
}

std::string NameDaemonState(std::time_t started) {
  if (started > 0) return SmartSnapshot::kRunning;
  return PathExists(BelowRoot("/usr/sbin/smartd")) ? SmartSnapshot::kStopped
                                                   : SmartSnapshot::kMissing;
}

}  // namespace

std::time_t FindSmartdStart() {
  const std::string folder = BelowRoot("/proc");
  std::int64_t first = -1;
  for (const std::string& name : NamesIn(folder)) {
    const std::string process = Within(folder, name);
    if (!ToNumber(name) || Attribute(Within(process, "comm")) != "smartd") continue;
    const std::int64_t ticks = ReadStartTicks(process);
    if (ticks >= 0 && (first < 0 || ticks < first)) first = ticks;
  }
  std::string text;
  ReadSmallFile(Within(folder, "stat").c_str(), kStatCap, text);
  if (first < 0) return 0;
  const std::time_t started = ParseBootTime(text) + first / sysconf(_SC_CLK_TCK);
  const std::time_t unit = ReadTimeOfUnit();
  return unit > 0 ? std::min(started, unit) : started;
}

Json::Value CollectSmart() {
  std::vector<std::string> disks = ListBlockDevices();
  std::erase_if(disks, [](const std::string& name) { return !IsDiskName(name); });
  if (disks.empty()) return {};
  const std::time_t started = FindSmartdStart();
  const std::vector<DriveRecord> records = ReadSmartdFiles(started, std::time(nullptr));
  KnownDrives known;
  for (const DriveRecord& drive : records) known.emplace(drive.serial, &drive);
  KnownDrives hidden = known;
  SmartSnapshot snapshot;
  snapshot.daemon = NameDaemonState(started);
  for (const std::string& device : disks) AddDevice(device, known, snapshot, hidden);
  for (const auto& [serial, drive] : hidden)
    if (drive->current) snapshot.drives.push_back(*drive);
  return snapshot.ToJson();
}

}  // namespace linux_platform
