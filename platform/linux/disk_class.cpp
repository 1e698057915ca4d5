#include "platform/linux/disk_class.h"

#include <libudev.h>

#include <cstring>
#include <memory>

#include "platform/linux/sysfs.h"

namespace vela::linuxplatform {
namespace {

using Udev = std::unique_ptr<udev, udev* (*)(udev*)>;
using Device = std::unique_ptr<udev_device, udev_device* (*)(udev_device*)>;

bool HasProperty(udev_device* device, const char* key, const char* value) {
  const char* set = udev_device_get_property_value(device, key);
  return set != nullptr && std::strcmp(set, value) == 0;
}

bool HasFlashProperty(udev_device* device) {
  udev_list_entry* entry = nullptr;
  udev_list_entry_foreach(entry, udev_device_get_properties_list_entry(device)) {
    if (std::string_view(udev_list_entry_get_name(entry)).starts_with("ID_DRIVE_FLASH"))
      return true;
  }
  return false;
}

// Whatever is below a root hub ("/usb2/") hangs on USB. libudev would look at every folder
// above the disk to say so.
bool HasUsbHub(std::string_view path) {
  const std::size_t hub = path.find("/usb");
  return hub != std::string_view::npos && path.find_first_of("0123456789", hub) == hub + 4;
}

// "3" of ".../ata3/host2/..."; empty without an ATA port.
std::string_view AtaPort(std::string_view path) {
  const std::size_t ata = path.find("/ata");
  if (ata == std::string_view::npos) return {};
  const std::string_view rest = path.substr(ata + 4);
  return rest.substr(0, rest.find('/'));
}

}  // namespace

DiskClass ClassOf(const DiskFacts& facts) {
  if (facts.carriesSystem) return DiskClass::Internal;
  if (facts.memoryCard) return DiskClass::SdCard;
  if (facts.usb) return facts.cardReader ? DiskClass::SdCard : DiskClass::Usb;
  if (facts.ata && (facts.markedEsata || facts.mountedAsMedia)) return DiskClass::Esata;
  return DiskClass::Internal;
}

std::string NumbersIn(std::string_view path) {
  constexpr std::string_view kDigits = "0123456789";
  std::string numbers;
  for (std::size_t begin = path.find_first_of(kDigits); begin != std::string_view::npos;) {
    const std::size_t end = std::min(path.find_first_not_of(kDigits, begin), path.size());
    const std::size_t width = end - begin;
    numbers.append(width < 10 ? 10 - width : 0, '0').append(path.substr(begin, width)).append(".");
    begin = path.find_first_of(kDigits, end);
  }
  return numbers;
}

DiskFacts ReadDiskFacts(const std::string& name, std::string_view esataPorts) {
  DiskFacts facts;
  const std::string path = facts.path = LinkTarget(Sys("/class/block/") + name);
  const std::string_view port = AtaPort(path);
  facts.place = NumbersIn(path);
  facts.ata = !port.empty();
  facts.usb = HasUsbHub(path);
  if (name.starts_with("mmcblk")) facts.memoryCard = Attribute(path + "/device/type") == "SD";
  // What udev's rules say counts for these two only.
  if (!facts.usb && !facts.ata) return facts;

  facts.markedEsata = facts.ata && HasWord(esataPorts, port, ", ");
  const Udev context(udev_new(), udev_unref);
  const Device disk(context ? udev_device_new_from_syspath(context.get(), path.c_str()) : nullptr,
                    udev_device_unref);
  if (!disk) return facts;
  facts.cardReader = HasProperty(disk.get(), "VELA_SDCARD", "1") || HasFlashProperty(disk.get());
  facts.markedEsata = facts.markedEsata || HasProperty(disk.get(), "VELA_BAY", "esata") ||
                      HasProperty(disk.get(), "UDISKS_SYSTEM", "0");
  return facts;
}

}  // namespace vela::linuxplatform
