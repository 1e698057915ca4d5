// The overall result of a lynis report.
#pragma once

#include <ctime>
#include <string_view>

#include <json/value.h>

namespace linux_platform {

// {"sysStatus": "safe" | "warning" | "danger", "reasons": [texts],
//  "dangers": [those of the reasons that are dangers by themselves],
//  "vulnerableSince": {package: seconds since 1970}}; null when the report is not of a
// scan that ran to its end. Danger is what points to an intruder or lets one in: several
// accounts with the rights of root, accounts without a password, malware, and packages
// with known holes that wait for their update for more than 14 days. Any other warning is
// "warning". `before` is the last result, of any shape, from which the packages' times
// come; `now` is the time of the scan.
Json::Value ConvertLynisReport(std::string_view report, const Json::Value& before, std::time_t now);

}  // namespace linux_platform
