// What /sys says of a drive: its serial number, and whether it can have health values at all.
#pragma once

#include <string>
#include <string_view>

namespace linux_platform {

// The serial number that the kernel keeps of the disk `device`, whose folder in /sys is `path`; ""
// for none. No command is sent.
std::string ReadSerialNumber(const std::string& device, const std::string& path);

// As smartd names its files: each character that is no letter or digit is "_".
std::string ToFileName(std::string_view serial);

enum class DriveKind {
  Physical,
  Without,          // a virtual disk, one of another machine, a memory chip: nothing to watch here
  BehindController  // a volume of a RAID controller, which hides its disks
};

// Reads a few attributes.
DriveKind ReadDriveKind(const std::string& device, const std::string& path);

}  // namespace linux_platform
