// The internal disks: where they sit, what they serve and how they are.
#pragma once

#include <vector>

#include "platform/linux/storage/devices.h"
#include "platform/linux/storage/md.h"
#include "platform/linux/storage/storage_view.h"

namespace linux_platform {

// Fills `view.disks` and lets their health count in the overview; reads
// `view.volumes`. A disk counts as failing while the monitoring daemon's hook keeps a
// record of its serial number below /var/lib/vela-platform/smart.
void ReadDisks(Devices& devices, const std::vector<std::string>& blockNames,
               const std::vector<MdArray>& arrays, StorageView& view);

// The serial number that the kernel keeps of the disk whose folder in /sys is `path`: no
// command is sent.
std::string SerialOf(const std::string& device, const std::string& path);

}  // namespace linux_platform
