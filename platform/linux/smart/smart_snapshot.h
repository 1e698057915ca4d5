// What smartd knows of the drives, out of its own files: the collector's snapshot "smart".
#pragma once

#include <string>
#include <vector>

#include <json/value.h>

#include "platform/linux/smart/drive_verdict.h"

namespace linux_platform {

struct SmartSnapshot {
  static constexpr const char* kSource = "smart";
  static constexpr const char *kRunning = "running", *kStopped = "stopped",
                              *kMissing = "not installed";

  std::string daemon = kMissing;  // one of the above
  std::vector<DriveRecord> drives;
  std::vector<std::string> without;  // devices that keep no such values: "vda"

  // Of a snapshot that was read, whose lists are in order: the drive behind the block device; null
  // where smartd knows none.
  const DriveRecord* FindDrive(std::string_view device) const;

  Json::Value ToJson() const;
  // Of an odd member as much as can be read.
  static SmartSnapshot FromJson(const Json::Value& document);
};

}  // namespace linux_platform
