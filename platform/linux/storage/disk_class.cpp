#include "platform/linux/storage/disk_class.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "platform/linux/base/sysfs.h"
#include "platform/linux/storage/udev_marks.h"

namespace linux_platform {
namespace {

// "3" of ".../ata3/host2/..."; empty without an ATA port.
std::string_view GetAtaPort(std::string_view path) {
  const std::size_t ata = path.find("/ata");
  if (ata == std::string_view::npos) return {};
  const std::string_view rest = path.substr(ata + 4);
  return rest.substr(0, rest.find('/'));
}

}  // namespace

// libudev would look at every folder above the disk to say so.
bool HasUsbHub(std::string_view path) {
  const std::size_t hub = path.find("/usb");
  return hub != std::string_view::npos && path.find_first_of("0123456789", hub) == hub + 4;
}

bool HasExternalPort(std::string_view path) {
  constexpr std::int64_t kLeadsOut = std::int64_t{1} << 21;
  const std::size_t host = path.find("/host");
  if (host == path.npos) return false;
  const std::string_view name = path.substr(host + 1, path.find('/', host + 1) - host - 1);
  const std::string command = Attribute(Sys("/class/scsi_host/", name, "/ahci_port_cmd"));
  std::int64_t bits = 0;
  std::from_chars(command.data(), command.data() + command.size(), bits, 16);
  return (bits & kLeadsOut) != 0;
}

DiskClass ClassifyDisk(const DiskFacts& facts) {
  if (facts.carriesSystem) return DiskClass::Internal;
  if (facts.memoryCard) return DiskClass::SdCard;
  if (facts.usb) return facts.cardReader ? DiskClass::SdCard : DiskClass::Usb;
  // A desktop mounts the disks of the machine below /media, too.
  const bool leadsOut = facts.mountedAsMedia && facts.externalPort;
  if (facts.ata && (facts.markedEsata || leadsOut)) return DiskClass::Esata;
  return DiskClass::Internal;
}

std::string ToSortKey(std::string_view path) {
  constexpr std::size_t kWidth = 10;
  std::string numbers;
  numbers.reserve(path.size() * 2);
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  for (auto at = path.begin(); (at = std::find_if(at, path.end(), isDigit)) != path.end();) {
    const auto end = std::find_if_not(at, path.end(), isDigit);
    const auto width = static_cast<std::size_t>(end - at);
    numbers.append(width < kWidth ? kWidth - width : 0, '0').append(at, end).push_back('.');
    at = end;
  }
  return numbers;
}

DiskFacts ReadDiskFacts(const std::string& name, const std::vector<std::string_view>& esataPorts) {
  DiskFacts facts;
  const std::string path = facts.path = LinkTarget(Sys("/class/block/", name));
  const std::string_view port = GetAtaPort(path);
  facts.place = ToSortKey(path);
  facts.ata = !port.empty();
  facts.usb = HasUsbHub(path);
  // "offline", or "transport-offline" where a remote disk's way to it is gone.
  facts.offline =
      name.starts_with("sd") && Attribute(Within(path, "device/state")).ends_with("offline");
  if (name.starts_with("mmcblk")) facts.memoryCard = Attribute(Within(path, "device/type")) == "SD";
  // What udev's rules say counts for these two only.
  if (!facts.usb && !facts.ata) return facts;

  facts.markedEsata = facts.ata && std::ranges::find(esataPorts, port) != esataPorts.end();
  const auto marks = ReadUdevMarks(path);
  if (!marks) return facts;
  facts.cardReader = marks->cardReader;
  facts.markedEsata = facts.markedEsata || marks->esata;
  return facts;
}

}  // namespace linux_platform
