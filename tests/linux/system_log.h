// What the platform writes to the system log, in place of the C library's syslog.
#pragma once

#include <string>
#include <vector>

std::vector<std::string> TakeSystemLog();
