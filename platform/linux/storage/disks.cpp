#include "platform/linux/storage/disks.h"

#include <algorithm>

#include "platform/linux/base/root.h"
#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

std::string DiskHolding(const std::string& device) {
  if (IsDiskName(device)) return device;
  const std::string folder = LinkTarget(Sys("/class/block/", device));
  return folder.empty() ? device : DiskOf(folder);
}

// What the arrays say of one disk.
struct Membership {
  std::string array;  // the first that it serves
  bool serves = false, waits = false;
  bool faulty = false, faultyInSystem = false;
};

bool CarriesRootOrSwap(const Devices& devices, const std::string& array) {
  return std::ranges::any_of(devices.RootAndSwap(), [&array](const Stack& stack) {
    return std::ranges::find(stack.layers, array) != stack.layers.end();
  });
}

std::map<std::string, Membership> Memberships(const Devices& devices,
                                              const std::vector<MdArray>& arrays) {
  std::map<std::string, Membership> all;
  for (const MdArray& array : arrays) {
    for (const MdMember& member : array.members) {
      Membership& of = all[DiskHolding(member.device)];
      if (of.array.empty()) of.array = array.name;
      (member.IsHotSpare() ? of.waits : of.serves) = true;
      if (!member.Has("faulty")) continue;
      of.faulty = true;
      if (CarriesRootOrSwap(devices, array.name)) of.faultyInSystem = true;
    }
  }
  return all;
}

// An array, volume, "system" or mapping; empty for a disk that nothing uses.
std::string UserOf(const std::string& device, const Membership& membership, const Devices& devices,
                   const StorageView& view) {
  if (membership.serves) return membership.array;
  if (membership.waits) return "hotspare";
  for (const InternalVolume& volume : view.volumes)
    if (std::ranges::find(volume.disks, device) != volume.disks.end())
      return "volume_" + std::to_string(volume.number);
  if (devices.CarriesSystem(device)) return "system";
  const std::string folder = Sys("/block/", device);
  std::vector<std::string> holders = NamesIn(Within(folder, "holders"));
  for (const std::string& entry : NamesIn(folder))
    if (holders.empty() && entry.starts_with(device))
      holders = NamesIn(Joined(folder, "/", entry, "/holders"));
  return holders.empty() ? std::string() : holders.front();
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

// The bay that an enclosure reports, before all disks without one; then by path.
std::string Place(const std::string& device, const DiskFacts& facts, bool enclosures) {
  if (enclosures)
    for (const std::string& entry : NamesIn(Within(facts.path, "device")))
      if (entry.starts_with("enclosure_device:")) return Joined("bay ", NumbersIn(entry));
  return Joined("path ", facts.place, device);
}

class DiskReader {
 public:
  DiskReader(Devices& devices, const std::vector<MdArray>& arrays, StorageView& view)
      : devices_(devices),
        view_(view),
        memberships_(Memberships(devices, arrays)),
        smart_(NamesIn(BelowRoot("/var/lib/vela-platform/smart"))) {}

  void Read(const std::vector<std::string>& blockNames) {
    const bool enclosures = PathExists(Sys("/class/enclosure"));
    std::vector<std::pair<std::string, std::string>> placed;
    for (const std::string& name : blockNames)
      if (IsDiskName(name) && devices_.Class(name) == DiskClass::Internal)
        placed.emplace_back(Place(name, devices_.Facts(name), enclosures), name);
    std::ranges::sort(placed);
    for (const auto& [place, name] : placed) {
      WholeDisk disk = Describe(name);
      disk.name = "Disk " + std::to_string(view_.disks.size() + 1);
      view_.overview = Worse(view_.overview, disk.health);
      view_.disks.push_back(std::move(disk));
    }
  }

 private:
  WholeDisk Describe(const std::string& device) {
    const auto known = memberships_.find(device);
    const Membership membership = known == memberships_.end() ? Membership() : known->second;
    const std::string& path = devices_.Facts(device).path;
    WholeDisk disk;
    disk.device = device;
    disk.usedBy = UserOf(device, membership, devices_, view_);
    disk.disconnected = IsDisconnected(device, path);
    const bool scsi = device.starts_with("sd");
    const bool offline = scsi && Attribute(Within(path, "device/state")) == "offline";
    const bool failing = IsFailing(device, path);
    disk.status = membership.faultyInSystem      ? "system_crashed"
                  : membership.faulty || offline ? "crashed"
                  : failing                      ? "warning"
                                                 : "normal";
    if (failing || (offline && !disk.usedBy.empty())) disk.health = Health::Abnormal;
    return disk;
  }

  // The serial number is asked for only when the daemon's hook has recorded any.
  bool IsFailing(const std::string& device, const std::string& path) const {
    if (smart_.empty()) return false;
    return std::ranges::find(smart_, SerialOf(device, path)) != smart_.end();
  }

  Devices& devices_;
  StorageView& view_;
  std::map<std::string, Membership> memberships_;
  std::vector<std::string> smart_;  // serial numbers of failing disks
};

}  // namespace

std::string SerialOf(const std::string& device, const std::string& path) {
  if (!device.starts_with("sd")) {
    const std::string serial =
        Attribute(Within(path, device.starts_with("vd") ? "serial" : "device/serial"));
    return serial.substr(std::min(serial.find_first_not_of(' '), serial.size()));
  }
  // A SCSI page: four bytes of header, then the text, padded with blanks.
  const std::string page = Attribute(Within(path, "device/vpd_pg80"));
  const std::size_t first = page.find_first_not_of(' ', std::min<std::size_t>(4, page.size()));
  return first == std::string::npos ? std::string() : page.substr(first);
}

void ReadDisks(Devices& devices, const std::vector<std::string>& blockNames,
               const std::vector<MdArray>& arrays, StorageView& view) {
  DiskReader(devices, arrays, view).Read(blockNames);
}

}  // namespace linux_platform
