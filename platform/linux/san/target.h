// The iSCSI target's LUNs: what the kernel has (configfs), and what was saved to be
// restored at the next boot.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace linux_platform {

// A storage object that an enabled target exports.
struct Lun {
  std::string name;     // of the object: "lun1"
  std::string object;   // with its backstore: "fileio_0/lun1"; as it was saved, "fileio/lun1"
  std::string backing;  // the path of its file or device; "" for memory and the like
  bool isEnabled = true;
  std::int64_t size = 0;  // what it promises, in bytes; 0 when that is not known
};

struct Target {
  std::vector<Lun> luns;           // by name
  std::vector<std::string> names;  // of every storage object, exported or not
  bool isServing = false;          // some target is enabled
};

// From <sys>/kernel/config/target. Nothing in it when there is no target.
Target ReadTarget();

// The LUNs of the enabled targets in a text in the format of saveconfig.json. False when
// the text is none; members of the wrong type count as missing.
bool ParseSavedLuns(std::string_view text, std::vector<Lun>& luns);

// The path in an object's "info" text: "... File: /volume1/a b.img  Size: 67108864 ...".
std::string ParseBackingPath(std::string_view info);
// The size in it; 0 without one.
std::int64_t ParseSize(std::string_view info);

}  // namespace linux_platform
