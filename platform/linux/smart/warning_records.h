// What smartd's hook has recorded (smartd-record): one file a drive, named after its serial number.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "platform/linux/smart/drive_verdict.h"

namespace linux_platform {

constexpr const char* kWarningsFolder = "/var/lib/vela-platform/smart";

// The lines "KIND [SECONDS [0xBITS]]" of a record. Each kind counts once, at its last line.
DriveWarnings ParseWarnings(std::string_view text);

// All records below the root, by serial number. A record that cannot be read, or says nothing, is
// a drive whose health has failed: it was written for some reason.
std::map<std::string, DriveWarnings> ReadWarningRecords();

}  // namespace linux_platform
