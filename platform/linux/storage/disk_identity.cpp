#include "platform/linux/storage/disk_identity.h"

#include <algorithm>
#include <charconv>

#include "platform/linux/base/sysfs.h"
#include "platform/linux/smart/drive_identity.h"
#include "platform/linux/storage/disk_class.h"
#include "platform/linux/storage/udev_record.h"

namespace linux_platform {
namespace {

constexpr std::string_view kInEnclosure = "enclosure_device:";

std::string Trim(std::string_view text) {
  const std::size_t first = std::min(text.find_first_not_of(' '), text.size());
  return std::string(text.substr(first, text.find_last_not_of(' ') + 1 - first));
}

// udev writes a blank as "\x20".
std::string Decode(std::string_view text) {
  std::string decoded;
  for (std::size_t at = 0; at < text.size(); ++at) {
    unsigned byte = 0;
    const std::string_view digits = text.substr(std::min(at + 2, text.size()), 2);
    const bool isEscape = text.substr(at, 2) == "\\x" && digits.size() == 2;
    if (!isEscape || std::from_chars(digits.begin(), digits.end(), byte, 16).ptr != digits.end()) {
      decoded.push_back(text[at]);
      continue;
    }
    decoded.push_back(static_cast<char>(byte));
    at += 3;
  }
  return decoded;
}

// SCSI has 16 characters for a model, of which ATA disks have more: udev has read them all.
std::string ReadModel(const std::string& device, const std::string& path,
                      const std::string& record) {
  const std::string model =
      Attribute(Within(path, device.starts_with("mmcblk") ? "device/name" : "device/model"));
  if (FindUdevProperty(record, "ID_BUS") == "ata" || FindUdevProperty(record, "ID_ATA") == "1") {
    std::string whole = Trim(Decode(FindUdevProperty(record, "ID_MODEL_ENC")));
    if (!whole.empty()) return whole;
  }
  const std::string vendor =
      device.starts_with("sd") ? Attribute(Within(path, "device/vendor")) : "";
  return vendor.empty() || vendor == "ATA" ? Trim(model) : Trim(Concatenate(vendor, " ", model));
}

// The innermost of the hubs' ports, "2-1.3" of ".../usb2/2-1/2-1.3/2-1.3:1.0/...".
std::string FindUsbPort(std::string_view path) {
  std::string_view port;
  while (!path.empty()) {
    path.remove_prefix(1);
    const std::string_view name = path.substr(0, path.find('/'));
    const bool isPort = !name.empty() && name.front() >= '0' && name.front() <= '9' &&
                        name.find('-') != name.npos && name.find(':') == name.npos;
    if (isPort) port = name;
    path.remove_prefix(name.size());
  }
  return std::string(port);
}

// Of a disk with several ways to it, the first controller's.
std::string ReadNvmeAddress(const std::string& device, const std::string& path) {
  std::string controller = device.substr(0, device.find('n', 4));
  for (const std::string& name : NamesIn(Within(path, "device"))) {
    const bool isController =
        name.starts_with("nvme") && ToNumber(std::string_view(name).substr(4));
    if (!isController) continue;
    controller = name;
    break;
  }
  const std::string address = Attribute(Sys("/class/nvme/", controller, "/address"));
  return address.empty() ? "" : "pci " + address;
}

std::string ReadPort(const std::string& device, const std::string& path) {
  if (HasUsbHub(path)) return "usb " + FindUsbPort(path);
  const std::size_t ata = path.find("/ata");
  if (ata != path.npos) return path.substr(ata + 1, path.find('/', ata + 1) - ata - 1);
  return device.starts_with("nvme") ? ReadNvmeAddress(device, path) : "";
}

EnclosureSlot ReadSlot(const std::string& path) {
  const std::string folder = Within(path, "device");
  for (const std::string& entry : NamesIn(folder)) {
    if (!entry.starts_with(kInEnclosure)) continue;
    const std::string leads = LinkTarget(Within(folder, entry));
    const std::string enclosure = leads.substr(0, leads.rfind('/'));
    return {ReadEnclosureId(std::string(LastComponent(enclosure))),
            ToSlotNumber(std::string_view(entry).substr(kInEnclosure.size()))};
  }
  return {};
}

}  // namespace

DiskIdentity ReadDiskIdentity(const std::string& device, const std::string& path) {
  const std::string record = ReadUdevRecordOf(device);
  DiskIdentity disk;
  disk.device = device;
  disk.model = ReadModel(device, path, record);
  disk.serial = ReadSerialNumber(device, path);
  if (disk.serial.empty()) disk.serial = FindUdevProperty(record, "ID_SERIAL_SHORT");
  disk.port = ReadPort(device, path);
  disk.slot = ReadSlot(path);
  disk.size = ReadDeviceSize(device);
  return disk;
}

std::string ReadEnclosureId(const std::string& name) {
  std::string id = Attribute(Sys("/class/enclosure/", name, "/id"));
  if (id.starts_with("0x")) id.erase(0, 2);
  return id.empty() ? name : id;
}

std::string ToSlotNumber(std::string_view name) {
  constexpr const char* kDigits = "0123456789";
  const std::size_t first = name.find_first_of(kDigits);
  if (first == name.npos) return std::string(name);
  const std::string_view number =
      name.substr(first, name.find_first_not_of(kDigits, first) - first);
  return std::string(number.substr(std::min(number.find_first_not_of('0'), number.size() - 1)));
}

std::uint64_t ReadDeviceSize(const std::string& device) {
  constexpr std::uint64_t kSector = 512;  // whatever the disk's own
  const std::int64_t sectors = NumberAttribute(Sys("/class/block/", device, "/size")).value_or(0);
  return sectors > 0 ? static_cast<std::uint64_t>(sectors) * kSector : 0;
}

}  // namespace linux_platform
