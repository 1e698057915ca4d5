// Who a whole disk is, and where it is plugged in: by what /sys keeps of it, and by what udev read
// when it came. No disk is asked.
#pragma once

#include <cstdint>
#include <string>

namespace linux_platform {

// A place for a disk in an enclosure that speaks SES.
struct EnclosureSlot {
  std::string enclosure;  // its identifier, 16 hexadecimal digits; else its name in /sys
  std::string number;     // "4" of "Slot 04"; a name without a number is itself
  bool operator==(const EnclosureSlot&) const = default;
};

// Texts are empty where nothing is known.
struct DiskIdentity {
  std::string device;      // kernel name
  std::string model;       // with the vendor, where that is one: "SEAGATE ST373453LC"
  std::string serial;      //
  std::string port;        // "ata3", "usb 1-2.3", "pci 0000:01:00.0"
  EnclosureSlot slot;      // empty where none holds it
  std::uint64_t size = 0;  // bytes
};

// Of the whole disk `device`, whose folder in /sys is `path`.
DiskIdentity ReadDiskIdentity(const std::string& device, const std::string& path);

// The identifier of the enclosure with that name in /sys/class/enclosure; else the name.
std::string ReadEnclosureId(const std::string& name);
// "4" of "Slot 04" or "ArrayDevice04".
std::string ToSlotNumber(std::string_view name);

// The size of a block device in bytes; 0 where /sys does not tell.
std::uint64_t ReadDeviceSize(const std::string& device);

}  // namespace linux_platform
