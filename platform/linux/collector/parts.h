// The slow sources, one part each. A part runs in a process of its own and may be killed.
#pragma once

#include <chrono>
#include <span>
#include <string>
#include <string_view>

#include <json/value.h>

namespace linux_platform {

struct MdArray;

struct Part {
  const char* name;  // of the snapshot: "ses"
  const char* what;  // in a few words, for --help
  std::chrono::milliseconds bound;
  // Null when the machine has no such source; else an object with the source's members,
  // or with "error" alone, in words.
  Json::Value (*collect)();
  bool isMemory = false;  // kept in kMemoryFolder and over restarts; no snapshot
};

std::span<const Part> AllParts();
const Part* FindPart(std::string_view name);

// An object with "error".
Json::Value MakeError(const std::string& why);

// Enclosures below /sys/class/enclosure, through their SCSI generic nodes; each in a
// process of its own, each command with 10 s.
Json::Value CollectSes();
// The management controller's sensors, through the program ipmi-sensors.
Json::Value CollectIpmi();
// Which fans of the sensor chips have turned since boot: what the last snapshot knew, and
// what is read now.
Json::Value CollectFans();
// Which supplies and fans the last snapshots have shown, now or before.
Json::Value CollectPlugged();
// Which arrays are being built for the first time, and how many members each is meant to have.
Json::Value CollectMd();
// Whether a disk says that it belongs to the array and does not serve it: it was a member. By what
// udev read of all disks when they came; none of them is asked.
bool HasFormerMember(const MdArray& array);
// What smartd knows of the drives, and whether it runs.
Json::Value CollectSmart();
// Which disks the machine has; and had, while something misses them.
Json::Value CollectDisks();
// Mappings that can lose something by themselves, through the kernel's device mapper.
Json::Value CollectDeviceMapper();
// What the lines of fstab stand for, and stood for when they were last there; what was scrubbed.
Json::Value CollectSeenStorage();
// What only root may read of what ought to be there: volume groups that miss a disk.
Json::Value CollectExpectedStorage();
// The web server's test of its configuration, when systemd finds something wrong with it.
Json::Value CollectWebServer();
// The cluster's state, through the program crm_mon.
Json::Value CollectCluster();
// Whether NUT is set up, and which UPSes it monitors: no users, no passwords.
Json::Value CollectNut();
// The capacity of file systems that are programs; each mount in a process of its own.
Json::Value CollectFuseblk();

// What the processes of their own print, as JSON on one line; none of them asks what an
// earlier one still asks.
// A part: what it collects.
std::string PrintPart(const Part& part);
// A mount: its ProgramMount, or "error". `device` is the mount's, as "8:17".
std::string PrintMount(const std::string& path, const std::string& device);
// An enclosure, by its name below /sys/class/enclosure: its Enclosure, null when it has
// neither fans nor supplies.
std::string PrintEnclosure(const std::string& name);

}  // namespace linux_platform
