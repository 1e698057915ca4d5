// What smartd knows of the drives, out of its own files. No drive is asked, so none is woken. The
// matching of serial numbers takes more reading than a request should do.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <utility>

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

// One that a state file names is the drive behind each device of that serial number: of all paths
// and namespaces.
void AddDevice(const std::string& device, const std::vector<DriveRecord>& known,
               SmartSnapshot& snapshot, std::vector<bool>& isFound) {
  const std::string path = LinkTarget(Sys("/class/block/", device));
  const std::string serial = ToFileName(ReadSerialNumber(device, path));
  bool isKnown = false;
  for (std::size_t i = 0; i < known.size() && !serial.empty(); ++i) {
    if (known[i].serial != serial) continue;
    isFound[i] = true;
    if (std::exchange(isKnown, true)) continue;
    DriveRecord& drive = snapshot.drives.emplace_back(known[i]);
    drive.device = device;
    drive.rotating = Attribute(Within(path, "queue/rotational")) == "1";
  }
  if (!isKnown && ReadDriveKind(device, path) == DriveKind::Without)
    snapshot.without.push_back(device);
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
  const std::vector<DriveRecord> known = ReadSmartdFiles(started, std::time(nullptr));
  SmartSnapshot snapshot;
  snapshot.daemon = NameDaemonState(started);
  std::vector<bool> isFound(known.size());
  for (const std::string& device : disks) AddDevice(device, known, snapshot, isFound);
  for (std::size_t i = 0; i < known.size(); ++i)
    if (!isFound[i] && known[i].current) snapshot.drives.push_back(known[i]);
  return snapshot.ToJson();
}

}  // namespace linux_platform
