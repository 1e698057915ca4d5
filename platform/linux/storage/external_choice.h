// Which mounts are external volumes, and the share name of each.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/base/trouble.h"
#include "platform/linux/storage/devices.h"
#include "platform/linux/storage/mounts.h"

namespace linux_platform {

struct ExternalVolume {
  DiskClass kind = DiskClass::Usb;
  std::string name;  // "usbshare1-2", "sdshare1", "satashare2"
  std::string path;
  dev_t device = 0;
  bool isProgram = false;  // a file system that a program serves, and that may hang
  Capacity capacity = {};
  Trouble trouble = {};  // why the capacity could not be read; none: it was
};

// A writable file system on disks that are all external, of one kind; once per file
// system; nothing behind a mount that may hang.
std::vector<ExternalVolume> ChooseExternal(const Mounts& mounts, Devices& devices);

// The share name that a mount point's last component is, if it has the form of one:
// usbshare, sdshare or satashare, a number, and perhaps a dash and a number.
bool IsShareName(std::string_view name);

}  // namespace linux_platform
