// The internal disks: where they sit, what they serve and how they are.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/smart/smart_watch.h"
#include "platform/linux/storage/devices.h"
#include "platform/linux/storage/md.h"
#include "platform/linux/storage/volumes.h"

namespace linux_platform {

struct WholeDisk {
  std::string device;             // kernel name
  std::string name;               // for people: "Disk 2"
  const char* status = "normal";  // or "warning", "crashed", "system_crashed"; static
  std::string usedBy;             // an array's or volume's name, "hotspare", or ""
  std::string array;              // the first that it is a member of, in use or not
  Health health = Health::Normal;
  bool disconnected = false;  // a remote one that lost its session
  DriveVerdict smart;         // of its own health values, with what is worth a note
};

struct InternalDisks {
  std::vector<WholeDisk> all;
  SmartCoverage smart;  // who watches their health
};

// The internal ones among `blockDevices`, by bay, then by place.
InternalDisks ReadDisks(Devices& devices, const std::vector<std::string>& blockDevices,
                        const std::vector<MdArray>& arrays,
                        const std::vector<InternalVolume>& volumes);

}  // namespace linux_platform
