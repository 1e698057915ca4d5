#include "platform/linux/smart/drive_identity.h"

#include <algorithm>
#include <array>

#include "platform/linux/base/sysfs.h"

namespace linux_platform {
namespace {

// What virtual machines call their disks, as vendor or within the model's name. Clouds put their
// own name in the place of QEMU's.
constexpr auto kVirtualNames = std::to_array<std::string_view>(
    {"QEMU",   "VBOX",      "VMware",         "Virtual",     "Msft",      "Microsoft", "Xen",
     "Google", "Amazon",    "PersistentDisk", "BlockVolume", "DO Volume", "HC Volume", "Linode",
     "MSFT",   "nvme_card", "Alibaba",        "VDISK",       "BHYVE",     "Parallels"});

// The drivers of controllers that show volumes in the place of their disks.
constexpr auto kRaidDrivers = std::to_array<std::string_view>(
    {"megaraid_sas", "megaraid", "hpsa", "smartpqi", "aacraid", "arcmsr", "3w-9xxx", "3w-sas",
     "3w-xxxx", "ips", "mvumi", "pmcraid", "cciss"});

bool IsVirtualName(const std::string& name) {
  return std::ranges::any_of(kVirtualNames, [&name](std::string_view word) {
    return name.find(word) != std::string::npos;
  });
}

// Of the host adapter, "host3" of ".../host3/target3:0:0/...".
std::string ReadDriver(const std::string& path) {
  const std::size_t host = path.find("/host");
  if (host == std::string::npos) return {};
  const std::string name = path.substr(host + 1, path.find('/', host + 1) - host - 1);
  return Attribute(Sys("/class/scsi_host/", name, "/proc_name"));
}

// Virtual buses, memory cards and sticks, and disks that another machine or a storage array serves.
bool HasNoValues(const std::string& device, const std::string& path) {
  constexpr auto kBuses =
      std::to_array<std::string_view>({"/virtio", "/vmbus", "/VMBUS", "/session", "/rport-"});
  if (device.starts_with("vd") || device.starts_with("xvd") || device.starts_with("mmcblk"))
    return true;
  if (std::ranges::any_of(kBuses, [&path](auto bus) { return path.find(bus) != path.npos; }))
    return true;
  // A stick that the machine was started from. Disks on USB are not removable.
  if (path.find("/usb") != path.npos && Attribute(Within(path, "removable")) == "1") return true;
  if (!device.starts_with("nvme")) return false;
  const std::string transport = Attribute(Within(path, "device/transport"));
  return !transport.empty() && transport != "pcie";
}

}  // namespace

std::string ReadSerialNumber(const std::string& device, const std::string& path) {
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

std::string ToFileName(std::string_view serial) {
  std::string name(serial);
  for (char& c : name)
    if (!((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'))) c = '_';
  return name;
}

DriveKind ReadDriveKind(const std::string& device, const std::string& path) {
  if (HasNoValues(device, path)) return DriveKind::Without;
  const std::string name =
      Attribute(Within(path, "device/vendor")) + " " + Attribute(Within(path, "device/model"));
  if (IsVirtualName(name)) return DriveKind::Without;
  const bool hidden = std::ranges::find(kRaidDrivers, ReadDriver(path)) != kRaidDrivers.end();
  return hidden ? DriveKind::BehindController : DriveKind::Physical;
}

}  // namespace linux_platform
