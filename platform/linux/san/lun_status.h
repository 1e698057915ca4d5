// The status word of a LUN.
#pragma once

namespace linux_platform {

struct LunEvidence {
  bool isConfigured = true;    // the kernel has it; false: only the saved configuration does
  bool hasStorage = true;      // its file or device is there and not empty
  bool isHostCrashed = false;  // the file system that holds its file has stopped working
  bool isEnabled = true;       // the kernel exports it
  bool isThin = false;         // its file takes less room than the LUN promises
  bool isHostFull = false;     // a tenth or less of that file system is free
};

// "Unhealthy", "unavailabling", "low_space" or "normal", whichever holds first. Only a LUN
// that is not "normal" can be reported for its volume's lack of space.
const char* StatusOf(const LunEvidence& lun);

}  // namespace linux_platform
