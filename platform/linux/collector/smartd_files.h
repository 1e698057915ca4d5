// The files that smartd keeps of each drive below /var/lib/smartmontools: its state, which it reads
// again when it is started, and the log of the drive's values.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/smart/drive_verdict.h"

namespace linux_platform {

// Adds to `drive` what a state's lines "key = value" tell: figures, and the warnings that smartd
// has sent and not taken back. It leaves out what is 0; an attribute that has an identifier and no
// value is 0.
void ParseSmartdState(std::string_view text, DriveRecord& drive);

// Adds the values of the log's last line, and as the earlier ones those of its first that is not
// older than `since`. The first line of `text` may be cut.
void ParseAttributeLog(std::string_view text, std::time_t since, DriveRecord& drive);

// All drives that have a state; `started` is when smartd was, 0 while it does not run.
std::vector<DriveRecord> ReadSmartdFiles(std::time_t started, std::time_t now);

// When the oldest smartd that runs was started, in seconds since 1970; 0 when none does.
std::time_t FindSmartdStart();

}  // namespace linux_platform
