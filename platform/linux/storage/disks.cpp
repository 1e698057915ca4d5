#include "platform/linux/storage/disks.h"

#include <algorithm>
#include <tuple>

#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

// What the arrays say of one disk.
struct Membership {
  std::string array;  // the first that it serves
  bool serves = false, waits = false;
  bool faulty = false, faultyInSystem = false;
};

bool CarriesRootOrSwap(const Devices& devices, const std::string& array) {
  return std::ranges::any_of(devices.GetRootAndSwap(), [&array](const Stack& stack) {
    return std::ranges::find(stack.layers, array) != stack.layers.end();
  });
}

void AddMember(const MdArray& array, const MdMember& member, bool isSystem, Membership& disk) {
  if (disk.array.empty()) disk.array = array.name;
  (member.IsHotSpare() ? disk.waits : disk.serves) = true;
  if (!member.Has("faulty")) return;
  disk.faulty = true;
  disk.faultyInSystem = disk.faultyInSystem || isSystem;
}

std::map<std::string, Membership> ListMemberships(const Devices& devices,
                                                  const std::vector<MdArray>& arrays) {
  std::map<std::string, Membership> memberships;
  for (const MdArray& array : arrays) {
    const bool isSystem = CarriesRootOrSwap(devices, array.name);
    for (const MdMember& member : array.members)
      AddMember(array, member, isSystem, memberships[FindDiskOf(member.device)]);
  }
  return memberships;
}

// iSCSI: the session above the disk. NVMe over a network: its controller.
bool IsDisconnected(const std::string& device, const std::string& path) {
  const std::size_t session = path.find("/session");
  if (session != std::string::npos) {
    const std::string name = path.substr(session + 1, path.find('/', session + 1) - session - 1);
    return Attribute(Sys("/class/iscsi_session/", name, "/state")) == "FAILED";
  }
  if (!device.starts_with("nvme")) return false;
  const std::string transport = Attribute(Within(path, "device/transport"));
  return !transport.empty() && transport != "pcie" &&
         Attribute(Within(path, "device/state")) != "live";
}

// Sorts disks in bays before the others. A bay shows as a link in the disk's SCSI device:
// "enclosure_device:Slot 04".
std::string MakePlaceKey(const std::string& device, const DiskFacts& facts, bool enclosures) {
  if (enclosures)
    for (const std::string& entry : NamesIn(Within(facts.path, "device")))
      if (entry.starts_with("enclosure_device:")) return Concatenate("bay ", ToSortKey(entry));
  return Concatenate("path ", facts.place, device);
}

class DiskReader {
 public:
  DiskReader(Devices& devices, const std::vector<MdArray>& arrays,
             const std::vector<InternalVolume>& volumes)
      : devices_(devices), memberships_(ListMemberships(devices, arrays)) {
    for (const InternalVolume& volume : volumes)
      for (const std::string& disk : volume.disks) firstVolumes_.try_emplace(disk, volume.number);
  }

  InternalDisks Read(const std::vector<std::string>& blockDevices) {
    const bool enclosures = PathExists(Sys("/class/enclosure"));
    struct Placed {
      std::string key, device;
    };
    std::vector<Placed> placed;
    for (const std::string& name : blockDevices)
      if (IsDiskName(name) && devices_.Classify(name) == DiskClass::Internal)
        placed.push_back({MakePlaceKey(name, devices_.GetFacts(name), enclosures), name});
    std::ranges::sort(placed, {},
                      [](const Placed& disk) { return std::tie(disk.key, disk.device); });
    InternalDisks disks;
    for (const Placed& disk : placed)
      disks.all.push_back(Describe(disk.device, disks.all.size() + 1));
    disks.smart = smart_.GetCoverage(blockDevices);
    return disks;
  }

 private:
  WholeDisk Describe(const std::string& device, std::size_t number) {
    const auto known = memberships_.find(device);
    const Membership membership = known == memberships_.end() ? Membership() : known->second;
    const std::string& path = devices_.GetFacts(device).path;
    WholeDisk disk;
    disk.device = device;
    disk.name = "Disk " + std::to_string(number);
    disk.array = membership.array;
    disk.usedBy = FindUser(device, membership);
    disk.disconnected = IsDisconnected(device, path);
    const bool offline = devices_.GetFacts(device).offline;
    disk.smart = smart_.Judge(device, path, disk.name);
    const bool failing = disk.smart.health == DriveHealth::Failing;
    disk.status = membership.faultyInSystem      ? "system_crashed"
                  : membership.faulty || offline ? "crashed"
                  : failing                      ? "warning"
                                                 : "normal";
    if (failing || (offline && !disk.usedBy.empty())) disk.health = Health::Abnormal;
    return disk;
  }

  // An array, volume, "system" or mapping; empty for a disk that nothing uses.
  std::string FindUser(const std::string& device, const Membership& membership) const {
    if (membership.serves) return membership.array;
    if (membership.waits) return "hotspare";
    const auto volume = firstVolumes_.find(device);
    if (volume != firstVolumes_.end()) return "volume_" + std::to_string(volume->second);
    return devices_.CarriesSystem(device) ? "system" : FindHolder(device);
  }

  Devices& devices_;
  std::map<std::string_view, int> firstVolumes_;  // on each disk: their numbers
  std::map<std::string, Membership> memberships_;
  SmartWatch smart_;
};

}  // namespace

InternalDisks ReadDisks(Devices& devices, const std::vector<std::string>& blockDevices,
                        const std::vector<MdArray>& arrays,
                        const std::vector<InternalVolume>& volumes) {
  return DiskReader(devices, arrays, volumes).Read(blockDevices);
}

}  // namespace linux_platform
